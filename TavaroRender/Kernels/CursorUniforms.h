#pragma once

#include <tuple>

#include <TavaroCore/Records/Fields.h>
#include <TavaroRender/Kernels/UniformModes.h>
#include <TavaroRender/Kernels/Vectors.h>

namespace tavaro {

/// What `cursorOverlay` needs to draw the pointer and one click effect; layout, units and colours as in
/// `CompositeUniforms`. The pointer and the click share `position`: where they differ, the kernel runs once for each.
struct CursorUniforms {
    Float4 fillColor;
    Float4 strokeColor;
    Float4 clickColor;
    Float2 canvasSize;
    Float2 position;
    Float2 contentOrigin;
    Float2 contentSize;
    float cursorSize = 0; // height of the arrow
    float opacity = 0;
    float clickRadius = 0;   // 0: no click in progress
    float clickProgress = 0; // 0…1
    CursorShape style = CursorShape::arrow;
    ClickShape clickEffect = ClickShape::none;
    float clickOpacity = 0;
    float pad0 = 0;
    Float2 velocity; // travel while the shutter is open
    float pad1 = 0;
    float pad2 = 0;

    static constexpr auto fields = std::tuple{
        field("fillColor", &CursorUniforms::fillColor),
        field("strokeColor", &CursorUniforms::strokeColor),
        field("clickColor", &CursorUniforms::clickColor),
        field("canvasSize", &CursorUniforms::canvasSize),
        field("position", &CursorUniforms::position),
        field("contentOrigin", &CursorUniforms::contentOrigin),
        field("contentSize", &CursorUniforms::contentSize),
        field("cursorSize", &CursorUniforms::cursorSize),
        field("opacity", &CursorUniforms::opacity),
        field("clickRadius", &CursorUniforms::clickRadius),
        field("clickProgress", &CursorUniforms::clickProgress),
        field("style", &CursorUniforms::style),
        field("clickEffect", &CursorUniforms::clickEffect),
        field("clickOpacity", &CursorUniforms::clickOpacity),
        field("pad0", &CursorUniforms::pad0),
        field("velocity", &CursorUniforms::velocity),
        field("pad1", &CursorUniforms::pad1),
        field("pad2", &CursorUniforms::pad2),
    };

    bool operator==(CursorUniforms const&) const = default;
};

static_assert(sizeof(CursorUniforms) == 128);
static_assert(listsEveryField<CursorUniforms>);

}
