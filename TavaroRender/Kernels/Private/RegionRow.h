#pragma once

#include <array>
#include <cstdint>

#include <TavaroRender/Kernels/Private/RegionFormula.h>

namespace tavaro {

struct RegionUniforms;

/// Mixes pixels `begin` … `end` − 1 of a row with a colour, by its alpha.
void tintRow(Float4 color, std::uint8_t* row, int begin, int end);

/// Lays the patch of the mask's points, with its grain, on pixels `begin` … `end` − 1 of row `y`.
void maskRow(RegionUniforms const& uniforms, std::array<MaskPoint, 8> const& points, std::uint8_t* row, int y,
             int begin, int end);

}
