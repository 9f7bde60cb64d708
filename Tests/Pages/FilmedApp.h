#pragma once

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

/// Draws an application as recordings show it: a side bar, a table and a chart that grows over `seconds`.
void drawFilmedApp(Image& image, double seconds);

}
