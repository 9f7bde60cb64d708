#include <TavaroRender/Composition/Private/FaceTrack.h>

#include <algorithm>
#include <mutex>
#include <vector>

#include <TavaroCore/Camera/CameraDirection.h>
#include <TavaroCore/Cursor/AutoPan.h>
#include <TavaroCore/Style/CameraSettings.h>

namespace tavaro {

struct FaceTrack::Path {
    std::once_flag made;
    std::vector<CursorSample> points;
};

namespace {

constexpr double headroom = 0.46;  // where the face lies in the part shown, from its top
constexpr double deadZone = 0.3;   // of `calmArea`: a head that nods moves nothing
constexpr double calmArea = 0.25;  // of the picture
constexpr double smoothing = 0.95; // of the path
constexpr double largestZoom = 6;  // more than this shows pixels, not a face

NormalizedRect insidePicture(NormalizedRect const& crop) {
    auto const inside = crop.inset(0, 0);
    return inside.area() > 0 ? inside : NormalizedRect{0, 0, 1, 1};
}

}

FaceTrack::FaceTrack(CameraSettings const& settings, std::vector<FaceSample> const& faces, double aspect)
    : settings_(settings)
    , faces_(faces)
    , aspect_(aspect)
    , crop_(insidePicture(settings.crop))
    , path_(std::make_unique<Path>()) {}

FaceTrack::~FaceTrack() = default;

UnitPoint2 FaceTrack::face(double at) const {
    std::call_once(path_->made, [&] {
        std::vector<CursorSample> centres;
        for (auto const& face : faces_) {
            if (face.rect.area() > 0) centres.push_back({face.t, face.rect.center().clamped()});
        }
        std::ranges::stable_sort(centres, {}, &CursorSample::t);
        path_->points = AutoPan(deadZone, smoothing).path(centres, {calmArea, calmArea});
    });
    return AutoPan::centre(path_->points, at).value_or(crop_.center());
}

NormalizedRect FaceTrack::crop(double at, double boxAspect) const {
    if (!settings_.tracksFace || faces_.empty() || !(boxAspect > 0) || !(aspect_ > 0)) return crop_;
    double const zoom = std::clamp(settings_.faceZoom, 1.0, largestZoom);
    // The largest part of the crop with the place's own aspect, so that nothing is cut from it but by the zoom.
    double const shown = boxAspect / aspect_; // width ÷ height in shares of the picture
    double const height = std::min(crop_.height, crop_.width / shown) / zoom;
    double const width = height * shown;
    auto const middle = face(at);
    return {std::clamp(middle.x - width / 2, crop_.x, std::max(crop_.maxX() - width, crop_.x)),
            std::clamp(middle.y - height * headroom, crop_.y, std::max(crop_.maxY() - height, crop_.y)), width, height};
}

}
