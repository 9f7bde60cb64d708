#pragma once

namespace tavaro {

/// How long applications take to say what is in their windows, and to be clicked by a title.
void benchElements();

}
