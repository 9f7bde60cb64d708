#include <TavaroCore/Zoom/ZoomResolver.h>

#include <algorithm>
#include <cmath>

namespace tavaro::ZoomResolver {

CameraState resolve(std::span<ZoomEvent const> events, double at, std::optional<CentreProvider> centre) {
    double total = 0;
    UnitPoint2 sum;
    CameraState state;
    for (auto const& event : events) {
        if (event.isLoupe()) continue;
        double const weight = presence(event, at);
        if (!(weight > 0)) continue;
        auto const c = centreOf(event, at, centre);
        total += weight;
        state.scale += weight * (event.scale - 1);
        sum = {sum.x + c.x * weight, sum.y + c.y * weight};
        state.motionBlur = std::max(state.motionBlur, weight * event.motionBlur);
    }
    if (total <= 0) return CameraState::identity;
    state.motionBlur = std::min(state.motionBlur, 1.0);
    if (state.scale > 1) {
        double const half = 0.5 / state.scale;
        state.center = {std::clamp(sum.x / total, half, 1 - half), std::clamp(sum.y / total, half, 1 - half)};
    }
    return state;
}

CameraState resolveWithVelocity(std::span<ZoomEvent const> events, double at, double dt,
                                std::optional<CentreProvider> centre) {
    auto state = resolve(events, at, centre);
    if (!(dt > 0)) return state;
    auto const before = resolve(events, std::max(at - dt, 0.0), centre);
    double const centreSpeed = state.center.distance(before.center) / dt;
    double const scaleSpeed = std::abs(state.scale - before.scale) / dt;
    state.velocity = std::min(scaleSpeed * 0.8 + centreSpeed * 2.5, 1.0);
    return state;
}

}
