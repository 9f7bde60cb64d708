#pragma once

#include <cstddef>
#include <cstdint>

namespace tavaro {

/// Blurs alphas in place by three box filters one after the other, which come close to a Gaussian of deviation
/// `radius`; nothing lies past the edges. Time hardly depends on the radius.
void blurAlpha(std::uint8_t* alphas, int width, int height, std::ptrdiff_t stride, int radius);

}
