#pragma once

#include <tuple>

#include <TavaroCore/Records/Fields.h>
#include <TavaroRender/Kernels/Vectors.h>

namespace tavaro {

/// What `blitLayer` needs to lay a bitmap on the canvas; layout and units as in `CompositeUniforms`.
struct BlitUniforms {
    Float2 canvasSize;
    Float2 origin; // top-left corner on the canvas
    Float2 size;   // on the canvas; the bitmap is stretched to it
    float opacity = 1;
    float pad0 = 0;

    static constexpr auto fields = std::tuple{
        field("canvasSize", &BlitUniforms::canvasSize),
        field("origin", &BlitUniforms::origin),
        field("size", &BlitUniforms::size),
        field("opacity", &BlitUniforms::opacity),
        field("pad0", &BlitUniforms::pad0),
    };

    bool operator==(BlitUniforms const&) const = default;
};

static_assert(sizeof(BlitUniforms) == 32);
static_assert(listsEveryField<BlitUniforms>);

}
