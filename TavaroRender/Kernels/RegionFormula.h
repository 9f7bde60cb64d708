#pragma once

#include <array>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/Arithmetic.h>

namespace tavaro {

struct RegionUniforms;

/// Is a pixel's centre, px along one axis of a picture of that size, in the region, whose borders count as inside?
inline bool isWithin(float center, float texSize, float origin, float size) {
    auto const normalised = center / texSize;
    return normalised >= origin && normalised <= origin + size;
}

/// Half the side of the blur's square, px.
int blurReach(RegionUniforms const& uniforms);

/// One of the eight places just outside a region whose colours a mask is made of.
struct MaskPoint {
    Float2 local; // 0…1 along the region
    Float4 color;
};

std::array<MaskPoint, 8> maskPoints(RegionUniforms const& uniforms, ImageView source);

}
