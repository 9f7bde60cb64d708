#include <TavaroRender/Places/FramePlaces.h>

#include <TavaroRender/Composition/Private/FrameState.h>

namespace tavaro {

namespace {

CanvasRect asCanvas(NormalizedRect const& rect) { return {rect.x, rect.y, rect.width, rect.height}; }

}

double FramePlaces::Divider::share(UnitPoint2 middle) const {
    if (isUpright()) return (middle.x - noCamera.x) / (allCamera.x - noCamera.x);
    return (middle.y - noCamera.y) / (allCamera.y - noCamera.y);
}

UnitPoint2 FramePlaces::onCanvas(UnitPoint2 const& point) const {
    UnitPoint2 const cropped{(point.x - crop.x) / crop.width, (point.y - crop.y) / crop.height};
    auto const at = canvasPoint(asCanvas(content), zoom, cropped);
    return {at.x, at.y};
}

UnitPoint2 FramePlaces::onRecording(UnitPoint2 const& point) const {
    auto const cropped = sourcePoint(asCanvas(content), zoom, {point.x, point.y});
    return {crop.x + cropped.x * crop.width, crop.y + cropped.y * crop.height};
}

NormalizedRect FramePlaces::onCanvas(NormalizedRect const& rect) const {
    auto const begin = onCanvas(UnitPoint2{rect.x, rect.y}), end = onCanvas(UnitPoint2{rect.maxX(), rect.maxY()});
    return {begin.x, begin.y, end.x - begin.x, end.y - begin.y};
}

NormalizedRect FramePlaces::onRecording(NormalizedRect const& rect) const {
    auto const begin = onRecording(UnitPoint2{rect.x, rect.y}), end = onRecording(UnitPoint2{rect.maxX(), rect.maxY()});
    return {begin.x, begin.y, end.x - begin.x, end.y - begin.y};
}

}
