#pragma once

#include <tuple>

#include <TavaroCore/Records/Fields.h>
#include <TavaroRender/Kernels/UniformModes.h>
#include <TavaroRender/Kernels/Vectors.h>

namespace tavaro {

/// What `regionEffect` needs to change one region of the recording before it is composited. The region counts to its
/// last pixel centre.
struct RegionUniforms {
    Float4 color;
    Float2 texSize;                     // of the recording, px
    Float2 origin;                      // normalised
    Float2 size;                        // normalised
    float radius = 0;                   // of the blur, px: half the side of its square, from 1 on
    RegionMode mode = RegionMode::blur; // the recording is only copied for a number without a name

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
