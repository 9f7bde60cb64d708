#pragma once

namespace tavaro {

/// A narration of 2,000 lines by a voice of this machine that answers at once: what is said again after one changed
/// line, and what the rest of the work costs.
void benchVoiceover();

}
