#include <TavaroRender/Composition/Private/CameraStage.h>

#include <cmath>
#include <mutex>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/CanvasUnit.h>
#include <TavaroCore/Zoom/ZoomResolver.h>
#include <TavaroRender/Composition/Private/CameraBubble.h>
#include <TavaroRender/Composition/Private/CameraDodge.h>
#include <TavaroRender/Composition/Private/FaceTrack.h>
#include <TavaroRender/Composition/Private/FollowPaths.h>
#include <TavaroRender/Composition/Private/FrameState.h>
#include <TavaroRender/Composition/Private/PointerTrack.h>
#include <TavaroRender/Composition/Private/SceneGeometry.h>
#include <TavaroRender/Composition/Private/ScenePlan.h>
#include <TavaroRender/Composition/Private/ScreenPlacement.h>
#include <TavaroRender/Composition/Private/SpeechPresence.h>
#include <TavaroRender/Composition/Private/SplitPanes.h>

namespace tavaro {

namespace {

constexpr double farAway = 0.55;     // of the canvas's diagonal: the bubble does not cross that much of the picture
constexpr double endFade = 0.4;      // seconds; a camera that stopped earlier than the screen does not freeze
constexpr double readableZoom = 1.2; // from there on a zoom's focus is what is looked at

bool hides(CameraPose const& pose) { return pose.scene == SceneLayout::screenOnly; }

CanvasRect wholeOf(Size2 canvas) {
    return {0, 0, static_cast<double>(canvas.width), static_cast<double>(canvas.height)};
}

}

/// What a frame's geometry is worked out from.
struct StageMoment {
    double at = 0;
    double cameraTime = 0;
    CameraState zoom;
};

struct CameraStage::State {
    State(DemoProject const& project, Size2 canvas, double aspect, ScreenPlacement const& screen,
          PointerTrack const& pointer, FollowPaths const& follow)
        : project(project)
        , canvas(canvas)
        , screen(screen)
        , pointer(pointer)
        , follow(follow)
        , split(project.effectiveSplit(canvas))
        , panes(splitPanes(split, canvas, project.screen.padding))
        , bubble(bubbleSize(project.camera, canvas))
        , face(project.camera, *project.cameraFaces, aspect)
        , speech(project) {
        if (auto const found = project.assetDurations.find(project.cameraAsset.value_or(""));
            found != project.assetDurations.end())
            cameraSeconds = found->second;
    }

    DemoProject const& project;
    Size2 const canvas;
    ScreenPlacement const& screen;
    PointerTrack const& pointer;
    FollowPaths const& follow;
    CanvasLayout::Split const split;
    SplitPanes const panes;
    CanvasPoint const bubble;
    FaceTrack const face;
    SpeechPresence const speech;
    double cameraSeconds = 0; // of the camera's movie; 0 where nobody knows
    mutable std::once_flag planned;
    mutable std::unique_ptr<ScenePlan const> plan_;
    mutable std::once_flag cornerFound;
    mutable CanvasCorner corner_ = CanvasCorner::bottomRight;

    ScenePlan const& plan() const;
    ScenePlan makePlan() const;
    void listBusyPoints(double at, std::vector<CanvasPoint>& points) const;

    CanvasCorner findMarkCorner() const;
    CanvasRect bubbleRect(CameraPose const& pose) const;
    CameraFigure figure(CameraPose const& pose, StageMoment const& moment) const;
    SceneGeometry settled(CameraPose const& pose, StageMoment const& moment) const;
    bool jumps(CameraPose const& from, CameraPose const& to) const;
    void advance(SceneGeometry& geometry, CameraPoseBlend const& way, StageMoment const& moment) const;
    double presence(CameraFigure const& figure, StageMoment const& moment) const;
};

ScenePlan const& CameraStage::State::plan() const {
    std::call_once(planned, [&] { plan_ = std::make_unique<ScenePlan const>(makePlan()); });
    return *plan_;
}

ScenePlan CameraStage::State::makePlan() const {
    CameraPose const base{project.baseScene(), project.camera.placement, project.camera.position};
    if (!project.usesCamera()) return ScenePlan(base, {}, {});
    if (!project.camera.avoidsContent || project.camera.fillsCanvas)
        return ScenePlan(base, project.layoutCues, project.cameraMoves);
    auto const rect = [this](CameraPose const& pose) { return bubbleRect(pose); };
    auto const busy = [this](double at, std::vector<CanvasPoint>& points) { listBusyPoints(at, points); };
    auto const moves = dodgingMoves({project.duration(), rect, busy}, base, project.cameraMoves);
    return ScenePlan(base, project.layoutCues, moves);
}

CanvasCorner CameraStage::State::findMarkCorner() const {
    if (!project.usesCamera() || project.camera.fillsCanvas) return CanvasCorner::bottomRight;
    auto const& steps = plan().steps();
    std::vector<Covered> covered;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (steps[i].pose.scene != SceneLayout::overlay) continue;
        double const end = i + 1 < steps.size() ? steps[i + 1].time : project.duration();
        double const seconds = std::min(end, project.duration()) - std::max(steps[i].time, 0.0);
        if (seconds > 0) covered.push_back({bubbleRect(steps[i].pose), seconds});
    }
    return freeCorner(canvas, covered);
}

void CameraStage::State::listBusyPoints(double at, std::vector<CanvasPoint>& points) const {
    auto const centre = [&](ZoomEvent const& event, double t) { return follow.centre(event, t); };
    auto const zoom = ZoomResolver::resolve(follow.events(), at, CentreProvider{centre});
    auto const content = screen.single(at, zoom).content;
    if (content.isEmpty()) return;
    if (auto const position = pointer.position(at)) points.push_back(canvasPoint(content, zoom, *position));
    for (auto const& event : follow.events()) {
        if (event.scale >= readableZoom && event.range().contains(at))
            points.push_back(canvasPoint(content, zoom, follow.centre(event, at)));
    }
}

CanvasRect CameraStage::State::bubbleRect(CameraPose const& pose) const {
    if (pose.position) return positionedBubbleRect(bubble, *pose.position, canvas);
    return placedBubbleRect(project.camera, bubble, pose.placement, canvas);
}

/// The camera in a scene that shows it, standing still.
CameraFigure CameraStage::State::figure(CameraPose const& pose, StageMoment const& moment) const {
    CameraFigure figure{.rect = wholeOf(canvas), .opacity = 1, .isPane = true};
    if (pose.scene == SceneLayout::split) {
        double const unit = canvasUnit(canvas);
        auto const aside = paneAside(panes.camera, split.arrangement);
        figure.rect = panes.camera;
        figure.aside = aside.center() - panes.camera.center();
        figure.radius = std::max(project.screen.cornerRadius, 0.0) * unit;
    } else if (pose.scene == SceneLayout::overlay) {
        figure.overlayShare = 1;
        figure.isCutOut = project.camera.cutout;
        if (!project.camera.fillsCanvas) {
            figure.rect = bubbleRect(pose);
            figure.radius = bubbleRadius(project.camera.shape, bubble);
            figure.chrome = 1;
            figure.isPane = false;
        }
    }
    double const aspect = figure.rect.height > 0 ? figure.rect.width / figure.rect.height : 1;
    figure.crop = face.crop(moment.cameraTime, aspect);
    return figure;
}

SceneGeometry CameraStage::State::settled(CameraPose const& pose, StageMoment const& moment) const {
    bool const isSplit = pose.scene == SceneLayout::split;
    SceneGeometry geometry;
    geometry.screen = isSplit ? screen.inSplit(moment.at, moment.zoom) : screen.single(moment.at, moment.zoom);
    geometry.splitShare = isSplit ? 1 : 0;
    geometry.screenShare = pose.scene == SceneLayout::cameraOnly ? 0 : 1;
    if (!hides(pose)) geometry.camera = figure(pose, moment);
    return geometry;
}

/// Whether the camera goes from one pose to the other unseen.
bool CameraStage::State::jumps(CameraPose const& from, CameraPose const& to) const {
    if (hides(from) || hides(to)) return false;
    bool const isOverlay = from.scene == SceneLayout::overlay;
    bool const becomesOverlay = to.scene == SceneLayout::overlay;
    if (isOverlay != becomesOverlay) return project.camera.cutout;
    if (!isOverlay || project.camera.fillsCanvas) return false;
    auto const way = bubbleRect(to).center() - bubbleRect(from).center();
    auto const whole = wholeOf(canvas);
    return way.length() > farAway * std::hypot(whole.width, whole.height);
}

/// Goes on along a way from wherever the ways before have led.
void CameraStage::State::advance(SceneGeometry& geometry, CameraPoseBlend const& way, StageMoment const& moment) const {
    auto const target = settled(way.to(), moment);
    auto const& camera = geometry.camera;
    auto const blend = jumps(way.from(), way.to()) ? dip : glide;
    geometry.camera = blend(camera, target.camera, way.progress());
    geometry.screen = lerp(geometry.screen, target.screen, way.progress());
    geometry.splitShare = std::lerp(geometry.splitShare, target.splitShare, way.progress());
    geometry.screenShare = std::lerp(geometry.screenShare, target.screenShare, way.progress());
}

/// How much of the opacity is left by silences, and beyond the ends of the camera's movie.
double CameraStage::State::presence(CameraFigure const& figure, StageMoment const& moment) const {
    double presence = project.camera.hidesWhenSilent ? speech.at(moment.at) : 1;
    if (cameraSeconds > 0) {
        double const outside = std::max(-moment.cameraTime, moment.cameraTime - cameraSeconds);
        presence *= 1 - std::clamp(outside / endFade, 0.0, 1.0);
    }
    return std::lerp(1.0, presence, figure.overlayShare);
}

CameraStage::CameraStage(DemoProject const& project, Size2 canvas, double cameraAspect, ScreenPlacement const& screen,
                         PointerTrack const& pointer, FollowPaths const& follow)
    : state_(std::make_unique<State>(project, canvas, cameraAspect, screen, pointer, follow)) {}

CameraStage::~CameraStage() = default;

SceneGeometry CameraStage::at(double editTime, double cameraTime, CameraState const& zoom) const {
    StageMoment const moment{editTime, cameraTime, zoom};
    auto const steps = state_->plan().underWay(editTime);
    auto geometry = state_->settled(steps.front().pose, moment);
    for (std::size_t i = 1; i < steps.size(); ++i) {
        CameraPoseBlend const way(steps[i - 1].pose, steps[i].pose, ScenePlan::progress(steps[i], editTime));
        state_->advance(geometry, way, moment);
    }
    geometry.camera.opacity *= state_->presence(geometry.camera, moment);
    geometry.camera = appearing(geometry.camera);
    return geometry;
}

CanvasCorner CameraStage::markCorner() const {
    std::call_once(state_->cornerFound, [&] { state_->corner_ = state_->findMarkCorner(); });
    return state_->corner_;
}

SceneLayout CameraStage::scene(double editTime) const { return state_->plan().underWay(editTime).back().pose.scene; }

}
