#include <TavaroRender/Composition/Private/FrameState.h>

#include <TavaroRender/Composition/Private/ContentRect.h>

namespace tavaro {

CanvasPoint canvasPoint(CanvasRect const& rect, CameraState const& camera, UnitPoint2 const& point) {
    double const u = (point.x - camera.center.x) * camera.scale + 0.5;
    double const v = (point.y - camera.center.y) * camera.scale + 0.5;
    return {rect.x + u * rect.width, rect.y + v * rect.height};
}

CanvasPoint canvasPoint(FrameState const& state, UnitPoint2 const& point) {
    return canvasPoint(state.contentRect, state.camera, point);
}

CanvasRect shownRect(FrameState const& state) {
    auto const& content = state.contentRect;
    auto const opening = SinglePane{content, state.clipRect, state.frameInsets}.opening();
    double const left = std::max(content.x, opening.x);
    double const top = std::max(content.y, opening.y);
    return {left, top, std::min(content.maxX(), opening.maxX()) - left, std::min(content.maxY(), opening.maxY()) - top};
}

}
