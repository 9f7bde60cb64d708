#include <TavaroRender/Composition/FrameComposer.h>

#include <TavaroCore/Cursor/AutoPan.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Zoom/LoupeResolver.h>
#include <TavaroCore/Zoom/ZoomResolver.h>
#include <TavaroRender/Composition/ClickLook.h>
#include <TavaroRender/Composition/ContentRect.h>
#include <TavaroRender/Composition/FollowPaths.h>
#include <TavaroRender/Composition/LoupeLens.h>
#include <TavaroRender/Composition/PointerTrack.h>

namespace tavaro {

namespace {

constexpr double shutter = 1.0 / 60; // seconds; what moves faster than this smears
constexpr double pointerHeight = 24; // points of the desktop's own pointer, with the box around it
// A pointer shrunk or blown up with the recording stays readable: shares of the canvas's smaller side.
constexpr double smallestPointer = 0.016;
constexpr double largestPointer = 0.06;

double smallerSide(Size2 size) { return static_cast<double>(std::min(size.width, size.height)); }

/// Fades what leaves the recording's rectangle, as a zoom can make the pointer do, over `reach` pixels.
double insideOpacity(CanvasRect const& rect, CanvasPoint point, double reach) {
    return 1 - std::clamp(rect.distance(point) / std::max(reach, 1.0), 0.0, 1.0);
}

LoupeLens lens(FrameState const& state) {
    if (!state.loupe) return {};
    return {state.loupeCanvasCenter, state.loupeRadiusPx, state.loupe->magnification, state.loupe->presence};
}

}

struct FrameComposer::Derived {
    Derived(DemoProject const& original, Size2 canvasSize)
        : project(original)
        , canvas(canvasSize)
        , pointer(project)
        , follow(project, pointer)
        , source(project.croppedSourceSize())
        , intro(project.introDuration())
        , outro(project.outroDuration())
        , pan(panPath()) {}

    DemoProject const project;
    Size2 const canvas;
    PointerTrack const pointer;
    FollowPaths const follow;
    Size2 const source;
    double const intro;
    double const outro;
    std::vector<CursorSample> const pan; // of a recording that overflows the canvas; empty where none does

    double duration() const { return intro + project.duration() + outro; }

    std::optional<ShownSource> shown(double at) const;
    std::vector<CursorSample> panPath() const;
    UnitPoint2 focus(double at) const;
    void placeScreen(FrameState& state, double at) const;
    void placeCamera(FrameState& state, double at) const;
    void placeLoupe(FrameState& state, double at) const;
    void placePointer(FrameState& state, double at) const;
    void placeClick(FrameState& state, double at) const;
    void listLayers(FrameState& state, double at) const;
};

/// Share of the recording that a filled canvas shows.
static VisibleFraction visibleFraction(Size2 canvas, CanvasRect const& content) {
    return {std::min(static_cast<double>(canvas.width) / content.width, 1.0),
            std::min(static_cast<double>(canvas.height) / content.height, 1.0)};
}

std::vector<CursorSample> FrameComposer::Derived::panPath() const {
    if (project.exportSettings.fit != ContentFit::fill) return {};
    auto const content = contentRect(source, canvas, ContentFit::fill, UnitPoint2::center, project.screen.padding);
    if (content.isEmpty()) return {};
    auto const visible = visibleFraction(canvas, content);
    if (visible.width >= 1 && visible.height >= 1) return {};
    return FollowPaths::pan().path(pointer.samples({0, project.duration()}), visible);
}

/// Which part of a recording that overflows the canvas is kept: the one the pointer is in.
UnitPoint2 FrameComposer::Derived::focus(double at) const {
    auto const centre = AutoPan::centre(pan, at);
    if (!centre) return UnitPoint2::center;
    auto const content = contentRect(source, canvas, ContentFit::fill, UnitPoint2::center, project.screen.padding);
    auto const visible = visibleFraction(canvas, content);
    auto const axis = [](double c, double share) { return share < 1 ? (c - share / 2) / (1 - share) : 0.5; };
    return {axis(centre->x, visible.width), axis(centre->y, visible.height)};
}

std::optional<ShownSource> FrameComposer::Derived::shown(double at) const {
    auto const* clip = project.timeline.clip(at);
    if (!clip) return std::nullopt;
    return ShownSource{clip->asset, *project.timeline.sourceTime(at)};
}

void FrameComposer::Derived::placeScreen(FrameState& state, double at) const {
    state.source = shown(at);
    if (!state.source) return;
    state.sourceSize = source;
    auto const pane = singlePane(source, canvas, project.screen, project.exportSettings.fit, focus(at));
    state.contentRect = pane.content;
    state.clipRect = pane.clip;
    state.frameInsets = pane.frame;
}

void FrameComposer::Derived::placeCamera(FrameState& state, double at) const {
    auto const centre = [&](ZoomEvent const& event, double t) { return follow.centre(event, t); };
    state.camera = ZoomResolver::resolveWithVelocity(project.zoomEvents, at, shutter, CentreProvider{centre});
    if (state.camera.velocity <= 0 || at < shutter) return;
    auto const before = ZoomResolver::resolve(project.zoomEvents, at - shutter, CentreProvider{centre});
    state.cameraTravel = {state.camera.center.x - before.center.x, state.camera.center.y - before.center.y};
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
    state.cursorOpacity = pointer.idleOpacity(at) * insideOpacity(state.contentRect, point, state.cursorSizePx * 0.6);
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
    state.clickOpacity = look.opacity * insideOpacity(state.contentRect, point, state.cursorSizePx * 0.6);
}

void FrameComposer::Derived::listLayers(FrameState& state, double at) const {
    for (auto const& overlay : project.overlays) {
        if (overlay.range().contains(at)) state.visibleOverlays.push_back(&overlay);
    }
    if (project.captions.isEnabled) state.captionCue = project.captions.cue(at);
}

FrameComposer::FrameComposer(DemoProject const& project, Size2 canvas)
    : derived_(std::make_unique<Derived>(project, canvas)) {}
FrameComposer::FrameComposer(FrameComposer&&) noexcept = default;
FrameComposer& FrameComposer::operator=(FrameComposer&&) noexcept = default;
FrameComposer::~FrameComposer() = default;

DemoProject const& FrameComposer::project() const { return derived_->project; }

Size2 FrameComposer::canvas() const { return derived_->canvas; }

double FrameComposer::duration() const { return derived_->duration(); }

std::optional<ShownSource> FrameComposer::source(double at) const {
    double const edit = at - derived_->intro;
    return edit >= 0 ? derived_->shown(edit) : std::nullopt;
}

FrameState FrameComposer::state(double at) const {
    auto const& derived = *derived_;
    auto const& project = derived.project;
    FrameState state;
    state.time = at;
    state.canvas = derived.canvas;
    double const edit = at - derived.intro;
    state.editTime = edit;
    if (edit < 0 && derived.intro > 0) {
        state.titleCard = &*project.intro;
        state.titleCardTime = at;
    } else if (edit >= project.duration() && derived.outro > 0) {
        state.titleCard = &*project.outro;
        state.titleCardTime = edit - project.duration();
    } else {
        derived.placeScreen(state, edit);
        derived.placeCamera(state, edit);
        if (!state.contentRect.isEmpty()) {
            derived.placeLoupe(state, edit);
            derived.placePointer(state, edit);
            derived.placeClick(state, edit);
        }
        derived.listLayers(state, edit);
    }
    return state;
}

}
