#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include <TavaroRender/Kernels/Private/CameraPlan.h>

namespace tavaro {

/// Working memory of the rows of one band.
struct CameraScratch {
    using Pair = std::array<std::int32_t, 4>; // two texels of four channels of 16 bits
    using Samples = std::vector<Pair>;        // one for each column of the canvas

    std::vector<std::int16_t> blended;
    std::array<Samples, 5> samples; // of a pixel and its neighbours
};

/// Draws the camera's box, or the person cut out of it, over row `y` of the canvas. `shadow` is what `shadowRow` made
/// of that row, and null where the box has none to draw alone.
void drawCameraRow(CameraPlan const& plan, CameraScratch& scratch, std::uint16_t const* shadow, std::uint8_t* row,
                   int y);

/// How dark the box's shadow is at each column of the plan in row `y`, 0…65535.
void shadowRow(CameraPlan const& plan, int y, std::uint16_t* out);

}
