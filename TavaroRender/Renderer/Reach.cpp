#include <TavaroRender/Renderer/Private/Reach.h>

#include <algorithm>
#include <cmath>

#include <TavaroRender/Kernels/BlitUniforms.h>
#include <TavaroRender/Kernels/CameraUniforms.h>
#include <TavaroRender/Kernels/CursorUniforms.h>

namespace tavaro {

namespace {

constexpr int clickSpotlight = 4;
constexpr int pointerSpotlight = 6;

PixelRect around(Float2 center, double x, double y) { return {center.x - x, center.y - y, center.x + x, center.y + y}; }

}

std::optional<PixelRect> reach(CursorUniforms const& pass) {
    float furthest = 0;
    if (pass.clickOpacity > 0 && pass.clickRadius > 0) {
        if (pass.clickEffect == clickSpotlight) return std::nullopt;
        furthest = pass.clickRadius * 1.6f + 3; // the widest glow ends at 1.45 radii
    }
    if (pass.opacity > 0 && pass.cursorSize > 0) {
        if (pass.style == pointerSpotlight) return std::nullopt;
        furthest = std::max(furthest, pass.cursorSize * 1.1f + 3 + std::hypot(pass.velocity.x, pass.velocity.y));
    }
    if (!std::isfinite(furthest)) return std::nullopt;
    return around(pass.position, furthest, furthest);
}

std::optional<PixelRect> reach(CameraUniforms const& pass) {
    // The shadow lies a little below the box and ends at 0.45 of its half width; a border hangs over by half of itself.
    double const shadow = pass.shadowOpacity > 0 ? 0.46 * pass.halfSize.x + 0.07 * pass.halfSize.y : 0;
    double const over = std::max<double>(shadow, pass.borderWidth / 2) + 3;
    if (!std::isfinite(over)) return std::nullopt;
    return around(pass.center, pass.halfSize.x + over, pass.halfSize.y + over);
}

PixelRect reach(BlitUniforms const& pass) {
    return {pass.origin.x - 1, pass.origin.y - 1, pass.origin.x + pass.size.x + 1, pass.origin.y + pass.size.y + 1};
}

}
