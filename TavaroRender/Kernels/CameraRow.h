#pragma once

#include <cstdint>

#include <TavaroRender/Kernels/CameraPlan.h>

namespace tavaro {

/// Draws the camera's box, or the person cut out of it, over row `y` of the canvas.
void drawCameraRow(CameraPlan const& plan, std::uint8_t* row, int y);

}
