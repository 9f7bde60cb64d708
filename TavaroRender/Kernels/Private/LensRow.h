#pragma once

#include <cstdint>

#include <TavaroRender/Kernels/Private/BackgroundRow.h>
#include <TavaroRender/Kernels/Private/Loupe.h>

namespace tavaro {

/// Canvas pixels `begin` … `end` − 1 of row `y`.
struct LensRow {
    int y = 0;
    int begin = 0;
    int end = 0;
};

// What the lens shows goes to `seen`, opaque RGBA, addressed like the canvas row. Both functions return false, with
// nothing drawn, for what the vector unit cannot read (pictures of odd layout, gradients of colours out of range).

/// Pixels of the rim: recording and background, bent.
bool seeRim(LensRow const& row, LoupeScene const& scene, BackgroundRows const& background, std::uint8_t* seen);
/// Pixels of the evenly magnified middle that show the background alone.
bool seeBackground(LensRow const& row, LoupeScene const& scene, BackgroundRows const& background, std::uint8_t* seen);

/// Lays the loupe's shadow, glass and what is seen through it over the canvas row.
void layLens(LensRow const& row, CompositeUniforms const& uniforms, std::uint8_t const* seen, std::uint8_t* canvas);

}
