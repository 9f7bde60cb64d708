#pragma once

#include <array>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/Arithmetic.h>

namespace tavaro {

struct RegionUniforms;

/// Is the centre of a pixel, px, in the region, whose borders count as inside?
bool isInRegion(RegionUniforms const& uniforms, Float2 point);

/// Half the side of the blur's square, px.
int blurReach(RegionUniforms const& uniforms);

/// One of the eight places just outside a region whose colours a mask is made of.
struct MaskPoint {
    Float2 local; // 0…1 along the region
    Float4 color;
};

std::array<MaskPoint, 8> maskPoints(RegionUniforms const& uniforms, ImageView source);

}
