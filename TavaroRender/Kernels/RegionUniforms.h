#pragma once

#include <cstdint>
#include <tuple>

#include <TavaroCore/Records/Fields.h>
#include <TavaroRender/Kernels/Vectors.h>

namespace tavaro {

/// What a region effect does.
enum class RegionMode : std::int32_t {
    blur,      // inside: box blur, wide enough that text cannot be read again
    highlight, // outside: mixed with the colour by its alpha, so that the region stands out
    fill,      // inside: mixed with the colour by its alpha
    mask,      // inside: a smooth patch of the colours around the region
};

/// What `regionEffect` needs to change one region of the recording before it is composited. The region counts to its
/// last pixel centre.
struct RegionUniforms {
    Float4 color;
    Float2 texSize;        // of the recording, px
    Float2 origin;         // normalised
    Float2 size;           // normalised
    float radius = 0;      // of the blur, px: half the side of its square, from 1 on
    std::int32_t mode = 0; // a `RegionMode`; the recording is only copied for any other number

    static constexpr auto fields = std::tuple{
        field("color", &RegionUniforms::color),   field("texSize", &RegionUniforms::texSize),
        field("origin", &RegionUniforms::origin), field("size", &RegionUniforms::size),
        field("radius", &RegionUniforms::radius), field("mode", &RegionUniforms::mode),
    };

    bool operator==(RegionUniforms const&) const = default;
};

static_assert(sizeof(RegionUniforms) == 48);
static_assert(listsEveryField<RegionUniforms>);

}
