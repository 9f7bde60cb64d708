#pragma once

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

/// Draws a desktop as recordings show it: a code editor with a side bar in which somebody types, and which scrolls for
/// a moment now and then. `frame` counts sixtieths of a second.
void drawScreenScene(Image& image, int frame);

}
