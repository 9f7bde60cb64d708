#include <TavaroRender/Renderer/Private/Reach.h>

#include <algorithm>
#include <cmath>

#include <TavaroRender/Kernels/BlitUniforms.h>
#include <TavaroRender/Kernels/CameraUniforms.h>
#include <TavaroRender/Kernels/CursorUniforms.h>
#include <TavaroRender/Kernels/Private/CursorReach.h>

namespace tavaro {

namespace {

CanvasBounds around(Float2 center, double x, double y) {
    return {center.x - x, center.y - y, center.x + x, center.y + y};
}

}

std::optional<CanvasBounds> reach(CursorUniforms const& pass) {
    constexpr double edge = 3; // pixels; edges are soft
    auto const drawn = clickReach(pass).unionWith(haloReach(pass)).unionWith(pointerReach(pass));
    if (drawn.extent == DrawingReach::Extent::everywhere) return std::nullopt;
    if (drawn.extent == DrawingReach::Extent::nowhere) return CanvasBounds{};
    CanvasBounds const bounds{drawn.low.x - edge, drawn.low.y - edge, drawn.high.x + edge, drawn.high.y + edge};
    double const sum = bounds.left + bounds.top + bounds.right + bounds.bottom;
    return std::isfinite(sum) ? std::optional(bounds) : std::nullopt;
}

std::optional<CanvasBounds> reach(CameraUniforms const& pass) {
    // The shadow lies a little below the box and ends at 0.45 of its half width; a border hangs over by half of itself.
    double const shadow = pass.shadowOpacity > 0 ? 0.46 * pass.halfSize.x + 0.07 * pass.halfSize.y : 0;
    double const over = std::max<double>(shadow, pass.borderWidth / 2) + 3;
    if (!std::isfinite(over)) return std::nullopt;
    return around(pass.center, pass.halfSize.x + over, pass.halfSize.y + over);
}

CanvasBounds reach(BlitUniforms const& pass) {
    return {pass.origin.x - 1, pass.origin.y - 1, pass.origin.x + pass.size.x + 1, pass.origin.y + pass.size.y + 1};
}

}
