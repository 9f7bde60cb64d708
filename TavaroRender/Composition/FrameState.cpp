#include <TavaroRender/Composition/FrameState.h>

namespace tavaro {

CanvasPoint canvasPoint(FrameState const& state, UnitPoint2 const& point) {
    auto const& rect = state.contentRect;
    double const u = (point.x - state.camera.center.x) * state.camera.scale + 0.5;
    double const v = (point.y - state.camera.center.y) * state.camera.scale + 0.5;
    return {rect.x + u * rect.width, rect.y + v * rect.height};
}

}
