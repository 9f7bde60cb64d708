#pragma once

namespace tavaro {

/// From now on every timeline has what it shows below it in the accessibility tree: a role, a sentence, the place;
/// press selects, double press opens, increase and decrease move it by a frame. Made as they are asked for.
void installTimelineAccessibility();

}
