#include <TavaroRender/Composition/Private/FrameState.h>

#include <TavaroRender/Composition/Private/ContentRect.h>

namespace tavaro {

CanvasPoint canvasPoint(CanvasRect const& rect, CameraState const& camera, UnitPoint2 const& point) {
    double const u = (point.x - camera.center.x) * camera.scale + 0.5;
    double const v = (point.y - camera.center.y) * camera.scale + 0.5;
    return {rect.x + u * rect.width, rect.y + v * rect.height};
}

UnitPoint2 sourcePoint(CanvasRect const& rect, CameraState const& camera, CanvasPoint const& point) {
    double const u = rect.width > 0 ? (point.x - rect.x) / rect.width : 0.5;
    double const v = rect.height > 0 ? (point.y - rect.y) / rect.height : 0.5;
    double const scale = camera.scale != 0 ? camera.scale : 1;
    return {(u - 0.5) / scale + camera.center.x, (v - 0.5) / scale + camera.center.y};
}

CanvasPoint canvasPoint(FrameState const& state, UnitPoint2 const& point) {
    return canvasPoint(state.contentRect, state.camera, point);
}

CanvasRect canvasRect(FrameState const& state, NormalizedRect const& crop, NormalizedRect const& rect) {
    auto const point = [&](double x, double y) {
        return canvasPoint(state, {(x - crop.x) / crop.width, (y - crop.y) / crop.height});
    };
    auto const begin = point(rect.x, rect.y);
    auto const end = point(rect.maxX(), rect.maxY());
    return {begin.x, begin.y, end.x - begin.x, end.y - begin.y};
}

CanvasRect shownRect(FrameState const& state) {
    auto const& content = state.contentRect;
    auto const opening = SinglePane{content, state.clipRect, state.frameInsets}.opening();
    double const left = std::max(content.x, opening.x);
    double const top = std::max(content.y, opening.y);
    return {left, top, std::min(content.maxX(), opening.maxX()) - left, std::min(content.maxY(), opening.maxY()) - top};
}

}
