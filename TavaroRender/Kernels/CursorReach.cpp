#include <TavaroRender/Kernels/Private/CursorReach.h>

#include <algorithm>

#include <TavaroRender/Kernels/CursorUniforms.h>
#include <TavaroRender/Kernels/Private/CursorShapes.h>

namespace tavaro {

namespace {

using Extent = DrawingReach::Extent;

DrawingReach around(Float2 center, float reach) { return {Extent::box, center - reach, center + reach}; }

/// How far from its middle a click effect still shows.
float clickRadius(CursorUniforms const& u) {
    switch (u.clickEffect) {
    case ClickShape::ripple: return u.clickRadius * 1.35f;
    case ClickShape::pulse: return u.clickRadius;
    case ClickShape::ring: return u.clickRadius + std::max(u.clickRadius * 0.10f, 1.5f);
    default: return std::max(u.clickRadius * 1.45f, u.clickRadius + 1.5f);
    }
}

float glowRadius(CursorUniforms const& u) { return u.cursorSize * 0.28f * 3.4f; }

bool hasPointer(CursorUniforms const& u) { return u.opacity > 0.001f && u.cursorSize > 0.5f; }

}

DrawingReach DrawingReach::unionWith(DrawingReach const& other) const {
    if (extent == Extent::nowhere || other.extent == Extent::everywhere) return other;
    if (other.extent == Extent::nowhere || extent == Extent::everywhere) return *this;
    return {Extent::box,
            {std::min(low.x, other.low.x), std::min(low.y, other.low.y)},
            {std::max(high.x, other.high.x), std::max(high.y, other.high.y)}};
}

DrawingReach clickReach(CursorUniforms const& u) {
    bool const isEffect = u.clickEffect > ClickShape::none && u.clickEffect <= ClickShape::prism;
    if (!isEffect || !(u.clickRadius > 0.5f) || !(u.clickOpacity > 0.001f)) return {};
    if (u.clickEffect == ClickShape::spotlight) return {Extent::everywhere};
    return around(u.position, clickRadius(u));
}

DrawingReach haloReach(CursorUniforms const& u) {
    if (!hasPointer(u)) return {};
    if (u.style == CursorShape::spotlight) return {Extent::everywhere};
    return u.style == CursorShape::glow ? around(u.position, glowRadius(u)) : DrawingReach{};
}

DrawingReach pointerReach(CursorUniforms const& u) {
    if (!hasPointer(u)) return {};
    auto const edge = std::max(u.cursorSize * 0.055f, 1.0f) / 2 + 1;
    auto reach = around(u.position, cursorRadius(u) + edge);
    if (u.style == CursorShape::arrow) {
        reach.low = u.position - edge;
        reach.high = u.position + Float2{u.cursorSize * 0.560f, u.cursorSize * 0.830f} + edge;
    }
    // The trail lies behind.
    auto const back = u.velocity * -1.0f;
    reach.low = reach.low + Float2{std::min(back.x, 0.0f), std::min(back.y, 0.0f)};
    reach.high = reach.high + Float2{std::max(back.x, 0.0f), std::max(back.y, 0.0f)};
    return reach;
}

}
