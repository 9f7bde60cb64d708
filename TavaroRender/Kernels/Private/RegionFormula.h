#pragma once

#include <array>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

struct RegionUniforms;

/// Is a pixel's centre, px along one axis of a picture of that size, in the region, whose borders count as inside?
inline bool isWithin(float center, float texSize, float origin, float size) {
    auto const normalised = center / texSize;
    return normalised >= origin && normalised <= origin + size;
}

/// Half the side of the blur's square, px: 1…2^22, where next to nothing of what is inside a picture counts any more.
int blurReach(RegionUniforms const& uniforms);

/// What every second place from `center` − `reach` to `center` + `reach` reads along an axis of `size` pixels: the
/// first one `before` times, each second one of `first` … `last`, and the last one `after` times.
struct BlurPlaces {
    BlurPlaces(int center, int reach, int size);

    int before = 0;
    int first = 0;
    int last = 0; // less than `first` where none is inside
    int after = 0;
};

/// One of the eight places just outside a region whose colours a mask is made of.
struct MaskPoint {
    Float2 local; // 0…1 along the region
    Float4 color;
};

std::array<MaskPoint, 8> maskPoints(RegionUniforms const& uniforms, ImageView source);

}
