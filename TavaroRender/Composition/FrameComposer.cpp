#include <TavaroRender/Composition/Private/FrameComposer.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/CanvasUnit.h>
#include <TavaroCore/Zoom/LoupeResolver.h>
#include <TavaroCore/Zoom/ZoomResolver.h>
#include <TavaroRender/Composition/Private/ClickLook.h>
#include <TavaroRender/Composition/Private/LoupeLens.h>
#include <TavaroRender/Composition/Private/RevisionParts.h>
#include <TavaroRender/Composition/Private/SceneGeometry.h>
#include <TavaroRender/Composition/Private/SpanIndex.h>

namespace tavaro {

namespace {

constexpr double shutter = 1.0 / 60; // seconds; what moves faster than this smears
constexpr double pointerHeight = 24; // points of the desktop's own pointer, with the box around it
// A pointer shrunk or blown up with the recording stays readable: shares of the canvas's smaller side.
constexpr double smallestPointer = 0.016;
constexpr double largestPointer = 0.06;

constexpr double invisible = 0.001;
constexpr double likelyAspect = 16.0 / 9; // of a camera that nobody has looked at yet

/// Fades what leaves the part of the recording that is shown, as a zoom or a pane can make the pointer do, and what
/// lies on a recording that the camera covers.
double shownOpacity(FrameState const& state, CanvasPoint point) {
    double const reach = std::max(state.cursorSizePx * 0.6, 1.0);
    return state.screenShare * (1 - std::clamp(shownRect(state).distance(point) / reach, 0.0, 1.0));
}

std::vector<TimeRange> rangesOf(std::vector<Overlay> const& overlays) {
    std::vector<TimeRange> ranges;
    for (auto const& overlay : overlays) ranges.push_back(overlay.range());
    return ranges;
}

LoupeLens lens(FrameState const& state) {
    if (!state.loupe) return {};
    return {state.loupeCanvasCenter, state.loupeRadiusPx, state.loupe->magnification, state.loupe->presence};
}

double aspectOf(std::optional<Size2> cameraSize) {
    return cameraSize && cameraSize->height > 0 ? cameraSize->aspect() : likelyAspect;
}

}

struct FrameComposer::Derived {
    Derived(DemoProject const& original, Size2 canvasSize, double cameraAspect, Derived const* before = nullptr)
        : revision(std::make_shared<DemoProject const>(original))
        , project(*revision)
        , canvas(canvasSize)
        , pointing(keptOrMade(before ? before->pointing : nullptr, revision))
        , following(keptOrMade(before ? before->following : nullptr, revision, pointing))
        , placing(keptOrMade(before ? before->placing : nullptr, revision, following, canvas))
        , staging(keptOrMade(before ? before->staging : nullptr, revision, placing, cameraAspect))
        , hiding(keptOrMade(before ? before->hiding : nullptr, revision))
        , pointer(pointing->track)
        , follow(following->paths)
        , stage(staging->stage)
        , source(project.croppedSourceSize())
        , intro(project.introDuration())
        , outro(project.outroDuration())
        , overlays(rangesOf(project.overlays)) {}

    Revision const revision;
    DemoProject const& project;
    Size2 const canvas;
    std::shared_ptr<Pointing const> const pointing;
    std::shared_ptr<Following const> const following;
    std::shared_ptr<Placing const> const placing;
    std::shared_ptr<Staging const> const staging;
    std::shared_ptr<Hiding const> const hiding;
    PointerTrack const& pointer;
    FollowPaths const& follow;
    CameraStage const& stage;
    Size2 const source;
    double const intro;
    double const outro;
    SpanIndex const overlays;

    double duration() const { return intro + project.duration() + outro; }
    bool isEdit(double edit) const { return !(edit < 0 && intro > 0) && !(edit >= project.duration() && outro > 0); }

    std::optional<ShownSource> shown(double at) const;
    CameraState zoom(double at) const;
    void placeZoom(FrameState& state, double at) const;
    void placeScene(FrameState& state, double at) const;
    void placeScreen(FrameState& state, SinglePane const& screen) const;
    void placeLoupe(FrameState& state, double at) const;
    void placePointer(FrameState& state, double at) const;
    void placeClick(FrameState& state, double at) const;
    void listLayers(FrameState& state, double at) const;
};

std::optional<ShownSource> FrameComposer::Derived::shown(double at) const {
    auto const* clip = project.timeline.clip(at);
    if (!clip) return std::nullopt;
    return ShownSource{clip->asset, *project.timeline.sourceTime(at)};
}

CameraState FrameComposer::Derived::zoom(double at) const {
    auto const centre = [&](ZoomEvent const& event, double t) { return follow.centre(event, t); };
    return ZoomResolver::resolveWithVelocity(follow.events(), at, shutter, CentreProvider{centre});
}

void FrameComposer::Derived::placeZoom(FrameState& state, double at) const {
    state.camera = zoom(at);
    if (state.camera.velocity <= 0 || at < shutter) return;
    auto const before = zoom(at - shutter);
    state.cameraTravel = {state.camera.center.x - before.center.x, state.camera.center.y - before.center.y};
}

/// The recording and the camera, where the scene puts them.
void FrameComposer::Derived::placeScene(FrameState& state, double at) const {
    state.source = shown(at);
    state.scene = stage.scene(at);
    if (!state.source) return;
    auto const recorded = pointer.recordedTime(at);
    // Nobody stood before the camera while another movie was made.
    if (!recorded && project.usesCamera()) return placeScreen(state, placing->screen.single(at, state.camera));
    // A positive offset: the camera was already running when the screen's recording began.
    double const cameraTime = recorded.value_or(state.source->time) + project.cameraOffset;
    auto const scene = stage.at(at, cameraTime, state.camera);
    placeScreen(state, scene.screen);
    state.screenShare = scene.screenShare;
    state.splitShare = scene.splitShare;
    auto const& camera = scene.camera;
    state.cameraOpacity = camera.opacity;
    if (!project.usesCamera() || camera.opacity <= invisible || camera.rect.isEmpty()) return;
    state.cameraSource = ShownSource{*project.cameraAsset, cameraTime};
    state.cameraBubbleRect = camera.rect;
    state.cameraIsFullPane = camera.isPane;
    state.cameraCornerRadius = camera.radius;
    state.cameraChrome = camera.chrome > 0;
    state.cameraChromeOpacity = camera.chrome;
    state.cameraCrop = camera.crop;
    state.cameraIsCutOut = camera.isCutOut;
}

void FrameComposer::Derived::placeScreen(FrameState& state, SinglePane const& screen) const {
    state.sourceSize = source;
    state.contentRect = screen.content;
    state.clipRect = screen.clip;
    state.frameInsets = screen.frame;
}

void FrameComposer::Derived::placeLoupe(FrameState& state, double at) const {
    auto const centre = [&](ZoomEvent const& event, double t) {
        auto const held = event.followsCursor ? pointer.position(t) : std::nullopt;
        return held ? *held : pointer.cropped(event.center);
    };
    state.loupe = LoupeResolver::resolve(project.zoomEvents, at, CentreProvider{centre});
    if (!state.loupe) return;
    state.loupeCanvasCenter = canvasPoint(state, state.loupe->center);
    state.loupeRadiusPx = state.loupe->radius * smallerSide(canvas);
}

void FrameComposer::Derived::placePointer(FrameState& state, double at) const {
    double const side = smallerSide(canvas);
    double const recorded = pointerHeight * std::max(project.metadata->scaleFactor, 0.1);
    double const shown = recorded * state.contentRect.width / std::max<double>(static_cast<double>(source.width), 1);
    state.cursorSizePx = std::clamp(shown, smallestPointer * side, largestPointer * side) *
                         std::max(project.cursor.size, 0.0) * std::max(state.camera.scale, 1.0);

    state.cursorPosition = pointer.position(at);
    if (!state.cursorPosition || !project.cursor.isVisible) return;
    auto const point = canvasPoint(state, *state.cursorPosition);
    state.cursorCanvasPoint = lens(state).seen(point);
    state.cursorOpacity = pointer.idleOpacity(at) * shownOpacity(state, point);
    if (project.cursor.motionBlur <= 0) return;
    auto const travel = pointer.travel(at, shutter);
    double const k = project.cursor.motionBlur * state.camera.scale;
    state.cursorBlur = {travel.x * k * state.contentRect.width, travel.y * k * state.contentRect.height};
}

void FrameComposer::Derived::placeClick(FrameState& state, double at) const {
    auto const& cursor = project.cursor;
    if (cursor.clickEffect == ClickEffect::none || cursor.clickDuration <= 0) return;
    auto const click = pointer.click(at, cursor.clickDuration);
    if (!click) return;
    double const progress = (at - click->start) / cursor.clickDuration;
    auto const look = clickLook(cursor.clickEffect, progress);
    auto const point = canvasPoint(state, click->position);
    state.activeClick = ActiveClick{click->position, progress, cursor.clickEffect};
    state.clickCanvasPoint = lens(state).seen(point);
    state.clickRadiusPx = look.radius * state.cursorSizePx;
    state.clickOpacity = look.opacity * shownOpacity(state, point);
}

void FrameComposer::Derived::listLayers(FrameState& state, double at) const {
    for (auto const item : overlays.holding(at)) state.visibleOverlays.push_back(&project.overlays[item]);
    if (state.source) state.redactions = hiding->redactions.active(state.source->asset, state.source->time);
    if (project.captions.isEnabled) state.captionCue = project.captions.cue(at);
}

FrameComposer::FrameComposer(DemoProject const& project, Size2 canvas, std::optional<Size2> cameraSize)
    : derived_(std::make_unique<Derived const>(project, canvas, aspectOf(cameraSize))) {}
FrameComposer::FrameComposer(std::unique_ptr<Derived const> derived) : derived_(std::move(derived)) {}
FrameComposer::FrameComposer(FrameComposer&&) noexcept = default;
FrameComposer& FrameComposer::operator=(FrameComposer&&) noexcept = default;
FrameComposer::~FrameComposer() = default;

FrameComposer FrameComposer::revised(DemoProject const& project, Size2 canvas, std::optional<Size2> cameraSize) const {
    return FrameComposer(std::make_unique<Derived const>(project, canvas, aspectOf(cameraSize), derived_.get()));
}

DemoProject const& FrameComposer::project() const { return derived_->project; }

Size2 FrameComposer::canvas() const { return derived_->canvas; }

double FrameComposer::duration() const { return derived_->duration(); }

std::optional<ShownSource> FrameComposer::source(double at) const {
    double const edit = at - derived_->intro;
    return edit >= 0 ? derived_->shown(edit) : std::nullopt;
}

std::optional<ShownSource> FrameComposer::cameraSource(double at) const {
    auto const& derived = *derived_;
    double const edit = at - derived.intro;
    if (!derived.project.usesCamera() || !derived.isEdit(edit)) return std::nullopt;
    FrameState state;
    state.canvas = derived.canvas;
    derived.placeScene(state, edit);
    return state.cameraSource;
}

std::vector<ZoomWindow> FrameComposer::zoomWindows(double at) const {
    auto const& derived = *derived_;
    double const edit = at - derived.intro;
    std::vector<ZoomWindow> windows;
    for (auto const& event : derived.follow.events()) {
        if (event.isLoupe() || !event.range().contains(edit)) continue;
        auto const centre = [&](ZoomEvent const&, double) { return derived.follow.centre(event, edit); };
        ZoomEvent const held{.start = edit - 1, .duration = 2, .rampIn = 0, .rampOut = 0, .scale = event.scale};
        auto const camera = ZoomResolver::resolve({&held, 1}, edit, CentreProvider{centre});
        double const side = 1 / std::max(camera.scale, 1.0);
        windows.push_back({event.id, {camera.center.x - side / 2, camera.center.y - side / 2, side, side}});
    }
    return windows;
}

FrameState FrameComposer::state(double at, ZoomUse zooms) const {
    auto const& derived = *derived_;
    auto const& project = derived.project;
    FrameState state;
    state.time = at;
    state.canvas = derived.canvas;
    double const edit = at - derived.intro;
    state.editTime = edit;
    if (project.exportSettings.includeWatermark) state.markCorner = derived.stage.markCorner();
    if (!derived.isEdit(edit)) {
        state.titleCard = edit < 0 ? &*project.intro : &*project.outro;
        state.titleCardTime = edit < 0 ? at : edit - project.duration();
        return state;
    }
    if (zooms == ZoomUse::zoomed) derived.placeZoom(state, edit);
    derived.placeScene(state, edit);
    if (!state.contentRect.isEmpty()) {
        derived.placeLoupe(state, edit);
        derived.placePointer(state, edit);
        derived.placeClick(state, edit);
    }
    derived.listLayers(state, edit);
    return state;
}

}
