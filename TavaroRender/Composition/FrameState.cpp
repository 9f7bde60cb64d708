#include <TavaroRender/Composition/Private/FrameState.h>

namespace tavaro {

CanvasPoint canvasPoint(CanvasRect const& rect, CameraState const& camera, UnitPoint2 const& point) {
    double const u = (point.x - camera.center.x) * camera.scale + 0.5;
    double const v = (point.y - camera.center.y) * camera.scale + 0.5;
    return {rect.x + u * rect.width, rect.y + v * rect.height};
}

CanvasPoint canvasPoint(FrameState const& state, UnitPoint2 const& point) {
    return canvasPoint(state.contentRect, state.camera, point);
}

}
