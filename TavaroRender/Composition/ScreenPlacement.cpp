#include <TavaroRender/Composition/Private/ScreenPlacement.h>

#include <mutex>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Zoom/ZoomPresence.h>
#include <TavaroRender/Composition/Private/FollowPaths.h>
#include <TavaroRender/Composition/Private/PointerTrack.h>

namespace tavaro {

/// The way of the part shown over a recording that is larger than its place. Made when it is first asked for.
struct ScreenPlacement::Pan {
    VisibleFraction visible; // share of the recording that its place shows
    mutable std::once_flag made;
    mutable std::vector<CursorSample> path;

    bool isStill() const { return visible.width >= 1 && visible.height >= 1; }
};

namespace {

double shareOf(double place, double content) {
    constexpr double nearlyAll = 1 - 1e-9;
    double const share = content > 0 ? place / content : 1;
    return share < nearlyAll ? share : 1;
}

/// What zooms and loupes are about at a time, and how far they have come in; no weight without one.
struct ZoomTarget {
    UnitPoint2 point = UnitPoint2::center;
    double weight = 0; // 0…1
};

ZoomTarget zoomTarget(FollowPaths const& follow, double at) {
    double sum = 0;
    UnitPoint2 point{0, 0};
    for (auto const& event : follow.events()) {
        double const weight = presence(event, at);
        if (weight <= 0) continue;
        auto const centre = follow.centre(event, at);
        point = {point.x + centre.x * weight, point.y + centre.y * weight};
        sum += weight;
    }
    if (sum <= 0) return {};
    return {{point.x / sum, point.y / sum}, std::min(sum, 1.0)};
}

}

ScreenPlacement::ScreenPlacement(DemoProject const& project, Size2 canvas, CanvasRect const& splitPane,
                                 PointerTrack const& pointer, FollowPaths const& follow)
    : project_(project)
    , pointer_(pointer)
    , follow_(follow)
    , canvas_(canvas)
    , source_(project.croppedSourceSize())
    , splitPane_(splitPane)
    , single_(std::make_unique<Pan>())
    , split_(std::make_unique<Pan>()) {
    if (project.exportSettings.fit == ContentFit::fill) {
        auto const pane = singlePane(source_, canvas, project.screen, ContentFit::fill, UnitPoint2::center);
        single_->visible = {shareOf(pane.opening().width, pane.content.width),
                            shareOf(pane.opening().height, pane.content.height)};
    }
    auto const content = coveringRect(source_, splitPane, UnitPoint2::center);
    split_->visible = {shareOf(splitPane.width, content.width), shareOf(splitPane.height, content.height)};
}

ScreenPlacement::~ScreenPlacement() = default;

UnitPoint2 ScreenPlacement::focus(Pan const& pan, double at, CameraState const& camera) const {
    if (pan.isStill()) return UnitPoint2::center;
    std::call_once(pan.made, [&] {
        pan.path = FollowPaths::pan().path(pointer_.samples({0, project_.duration()}), pan.visible);
    });
    auto const pointed = AutoPan::centre(pan.path, at).value_or(UnitPoint2::center);
    auto const zoomed = zoomTarget(follow_, at);
    auto const wanted = UnitPoint2::lerp(pointed, zoomed.point, zoomed.weight);
    auto const axis = [&](double point, double middle, double share) {
        double const place = (point - middle) * camera.scale + 0.5; // on the zoomed recording
        return share < 1 ? std::clamp((place - share / 2) / (1 - share), 0.0, 1.0) : 0.5;
    };
    return {axis(wanted.x, camera.center.x, pan.visible.width), axis(wanted.y, camera.center.y, pan.visible.height)};
}

SinglePane ScreenPlacement::single(double at, CameraState const& camera) const {
    return singlePane(source_, canvas_, project_.screen, project_.exportSettings.fit, focus(*single_, at, camera));
}

SinglePane ScreenPlacement::inSplit(double at, CameraState const& camera) const {
    return {coveringRect(source_, splitPane_, focus(*split_, at, camera)), splitPane_, {}};
}

}
