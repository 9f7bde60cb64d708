#include <TavaroRender/Renderer/Private/FrameUniforms.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/CanvasUnit.h>
#include <TavaroRender/Composition/Private/ContentRect.h>
#include <TavaroRender/Composition/Private/FrameState.h>
#include <TavaroRender/Renderer/Private/UniformNumbers.h>

namespace tavaro {

namespace {

constexpr float zoomSharpening = 0.5f; // brings back what magnifying softens, without halos
constexpr double shutterShare = 0.5;   // the shutter is open for half of each 1/60 s
constexpr double smallestBlur = 1.5;   // canvas pixels; less is invisible and would cost the sharp sample
constexpr double blurPixelsPerTap = 2;
constexpr double seedSeconds = 37; // how far apart on the clock the shapes of two seeds lie

BackgroundMode backgroundMode(BackgroundStyle const& style) {
    static constexpr auto modes = modesNamed<BackgroundMode>(BackgroundStyle::caseNames);
    return modes[style.content.index()];
}

/// Colour `index` of a list that may be too short: it repeats, and an empty one is a quiet night sky.
Float4 colourAt(std::span<RGBAColor const> colours, std::size_t index) {
    static constexpr std::array night{RGBAColor::rgb(0x1E1B4B), RGBAColor::rgb(0x4338CA), RGBAColor::rgb(0x0E7490),
                                      RGBAColor::rgb(0x111827)};
    return float4(colours.empty() ? night[index % night.size()] : colours[index % colours.size()]);
}

struct BackgroundFiller {
    CompositeUniforms& uniforms;
    double time;

    void gradient(Gradient const& gradient) {
        uniforms.bgColor0 = float4(gradient.from);
        uniforms.bgColor1 = float4(gradient.to);
    }
    void animated(std::span<RGBAColor const> colours, double speed, double seed) {
        uniforms.bgColor0 = colourAt(colours, 0);
        uniforms.bgColor1 = colourAt(colours, 1);
        uniforms.bgColor2 = colourAt(colours, 2);
        uniforms.bgColor3 = colourAt(colours, 3);
        uniforms.bgParam = {1, 0}; // the speed is in the time already, so that a held background has one time
        uniforms.time = static_cast<float>(time * speed + seed * seedSeconds);
    }

    void operator()(BackgroundStyle::Solid const& style) { uniforms.bgColor0 = float4(style.colour); }
    void operator()(BackgroundStyle::LinearGradient const& style) {
        gradient(style.gradient);
        double const radians = style.angle * M_PI / 180;
        double const x = std::cos(radians);
        double const y = std::sin(radians);
        double const reach = std::abs(x) + std::abs(y); // the two ends lie in opposite corners
        uniforms.bgParam = float2(x / reach, y / reach);
    }
    void operator()(BackgroundStyle::RadialGradient const& style) {
        gradient(style.gradient);
        uniforms.bgParam = float2(style.center.x, style.center.y);
    }
    void operator()(BackgroundStyle::Mesh const& style) { animated(style.colors, style.speed, style.seed); }
    void operator()(BackgroundStyle::Aurora const& style) { animated(style.colors, style.speed, style.seed); }
    void operator()(BackgroundStyle::ImageFile const&) {}
    void operator()(BackgroundStyle::None const&) {}
};

/// A plain recording that reaches the canvas's edge goes on behind it: the antialiasing of the layer's own edge, a
/// pixel to each side of it, would let the background through the outermost pixels.
CanvasRect beyondTheEdges(CanvasRect clip, Size2 canvas, ScreenStyle const& style) {
    bool const isPlain =
        style.frame == DeviceFrame::none && !hasInsetBand(style) && style.cornerRadius <= 0 && style.borderWidth <= 0;
    if (!isPlain || clip.width <= 0 || clip.height <= 0) return clip;
    constexpr double reach = 2;
    constexpr double tolerance = 1e-6;
    auto const extend = [](double& start, double& length, std::int64_t canvasLength) {
        auto const end = static_cast<double>(canvasLength);
        if (start + length >= end - tolerance) length = std::max(start + length, end + reach) - start;
        if (start > tolerance) return;
        length += start - std::min(start, -reach);
        start = std::min(start, -reach);
    };
    extend(clip.x, clip.width, canvas.width);
    extend(clip.y, clip.height, canvas.height);
    return clip;
}

/// 0…1: how much of a device frame is there; a scene without one takes it away bit by bit.
double frameShare(CanvasInsets const& insets, DeviceFrame frame, double openingWidth) {
    auto const nominal = tavaro::insets(frame);
    double const wanted = (nominal.left + nominal.top + nominal.right + nominal.bottom) * openingWidth;
    double const shown = insets.left + insets.top + insets.right + insets.bottom;
    return wanted > 0 && shown > 0.5 ? std::min(shown / wanted, 1.0) : 0;
}

/// Corners inside corners, with one centre. An opening that reaches the outer edge somewhere ends in that edge's own.
float openingRadius(Float4 const& inset, float outer) {
    float const gap = std::min({inset.x, inset.y, inset.z, inset.w});
    return gap > 0 ? std::max(outer - gap, 0.0f) : 0;
}

/// The frame around the recording, or the band in its place, as far as the scene has one.
void fillFrame(CompositeUniforms& uniforms, FrameState const& state, ScreenStyle const& style) {
    auto const& inset = state.frameInsets;
    uniforms.frameInset = {static_cast<float>(inset.left), static_cast<float>(inset.top),
                           static_cast<float>(inset.right), static_cast<float>(inset.bottom)};
    uniforms.frameTint = float4(style.frameTint);
    if (hasInsetBand(style)) {
        float const gap = std::min(uniforms.frameInset.x, uniforms.frameInset.y);
        if (!(gap > 0)) return;
        uniforms.frameMode = FrameMode::insetBand;
        uniforms.matColor = float4(style.insetColor);
        // Corners with one centre, and never quite sharp inside rounded ones.
        uniforms.innerRadius = std::max(uniforms.cornerRadius - gap, uniforms.cornerRadius * 0.35f);
        return;
    }
    double const width = state.clipRect.width - inset.left - inset.right;
    double const whole = frameShare(inset, style.frame, width);
    if (whole <= 0) return;
    uniforms.frameMode = modeOf<FrameMode>(style.frame);
    uniforms.frameRadius = static_cast<float>(outerRadius(style.frame) * width * whole);
    uniforms.innerRadius = openingRadius(uniforms.frameInset, std::max(uniforms.frameRadius, uniforms.cornerRadius));
}

void fillScreenLayer(CompositeUniforms& uniforms, FrameState const& state, ScreenStyle const& style) {
    // Radii and widths are told at a canvas whose smaller side is 1080.
    double const unit = canvasUnit(state.canvas);
    auto const scaled = [unit](double length) { return static_cast<float>(std::max(length, 0.0) * unit); };
    uniforms.contentOrigin = float2(state.contentRect.x, state.contentRect.y);
    uniforms.contentSize = float2(state.contentRect.width, state.contentRect.height);
    auto const clip = beyondTheEdges(state.clipRect, state.canvas, style);
    uniforms.clipOrigin = float2(clip.x, clip.y);
    uniforms.clipSize = float2(clip.width, clip.height);
    uniforms.cornerRadius = scaled(style.cornerRadius);
    uniforms.borderColor = float4(style.borderColor);
    uniforms.borderWidth = scaled(style.borderWidth);
    uniforms.shadowColor = {0, 0, 0, 1};
    uniforms.shadowRadius = scaled(style.shadowRadius);
    uniforms.shadowOffsetY = static_cast<float>(style.shadowOffsetY * unit);
    // Panes lie side by side in one plane, the camera's as flat as the recording's.
    uniforms.shadowOpacity = static_cast<float>(std::clamp(style.shadowOpacity, 0.0, 1.0) * (1 - state.splitShare));
    fillFrame(uniforms, state, style);
}

void fillZoom(CompositeUniforms& uniforms, FrameState const& state, DemoProject const& project) {
    auto const& camera = state.camera;
    uniforms.zoomCenter = float2(camera.center.x, camera.center.y);
    uniforms.zoomScale = static_cast<float>(camera.scale);
    uniforms.sharpen = zoomSharpening;
    auto const crop = project.effectiveCrop();
    uniforms.cropOrigin = float2(crop.x, crop.y);
    uniforms.cropSize = float2(crop.width, crop.height);

    double const share = std::clamp(camera.motionBlur, 0.0, 1.0) * shutterShare * camera.scale;
    CanvasPoint const blur{state.cameraTravel.x * share, state.cameraTravel.y * share};
    double const pixels = std::hypot(blur.x * state.contentRect.width, blur.y * state.contentRect.height);
    if (pixels < smallestBlur) return;
    uniforms.blurVector = float2(blur);
    uniforms.blurStrength = static_cast<float>(std::clamp(camera.motionBlur, 0.0, 1.0));
    uniforms.blurTaps = std::clamp(static_cast<int>(std::ceil(pixels / blurPixelsPerTap)) + 1, 3, 16);
}

void fillLoupe(CompositeUniforms& uniforms, FrameState const& state) {
    if (!state.loupe) return;
    uniforms.loupeCenter = float2(state.loupeCanvasCenter);
    uniforms.loupeRadius = static_cast<float>(state.loupeRadiusPx);
    uniforms.loupeMag = static_cast<float>(state.loupe->magnification);
    uniforms.loupePresence = static_cast<float>(std::clamp(state.loupe->presence, 0.0, 1.0));
}

/// The arrow is black with a white outline, the other pointers white with a dark one; a tint colours the fill and
/// takes the outline that stands out from it.
void fillPointerColours(CursorUniforms& uniforms, CursorSettings const& settings) {
    auto const fill =
        settings.tint.value_or(settings.style == CursorStyle::native ? RGBAColor::black : RGBAColor{1, 1, 1, 0.92});
    bool const isDark = 0.2126 * fill.r + 0.7152 * fill.g + 0.0722 * fill.b < 0.6;
    uniforms.fillColor = float4(fill);
    uniforms.strokeColor = isDark ? Float4{1, 1, 1, 1} : Float4{0, 0, 0, 0.55f};
}

void fillPointer(CursorUniforms& uniforms, FrameState const& state, CursorSettings const& settings) {
    fillPointerColours(uniforms, settings);
    uniforms.position = float2(state.cursorCanvasPoint);
    uniforms.cursorSize = static_cast<float>(state.cursorSizePx);
    uniforms.opacity = static_cast<float>(std::clamp(state.cursorOpacity, 0.0, 1.0));
    uniforms.style = modeOf<CursorShape>(settings.style);
    if (state.cursorBlur.length() > smallestBlur) uniforms.velocity = float2(state.cursorBlur);
}

void fillClick(CursorUniforms& uniforms, FrameState const& state, CursorSettings const& settings) {
    uniforms.position = float2(state.clickCanvasPoint);
    uniforms.clickColor = float4(settings.clickColor);
    uniforms.clickRadius = static_cast<float>(state.clickRadiusPx);
    uniforms.clickProgress = static_cast<float>(state.activeClick->progress);
    uniforms.clickEffect = modeOf<ClickShape>(state.activeClick->effect);
    uniforms.clickOpacity = static_cast<float>(std::clamp(state.clickOpacity, 0.0, 1.0));
}

void fillCursorPasses(FrameUniforms& frame, FrameState const& state, CursorSettings const& settings) {
    CursorUniforms blank;
    blank.canvasSize = frame.composite.canvasSize;
    blank.contentOrigin = frame.composite.contentOrigin;
    blank.contentSize = frame.composite.contentSize;
    if (state.activeClick && state.clickOpacity > 0.001 && state.clickRadiusPx > 0.5) {
        frame.cursor[frame.cursorPasses] = blank;
        fillClick(frame.cursor[frame.cursorPasses++], state, settings);
    }
    if (state.cursorOpacity <= 0.001 || state.cursorSizePx <= 0.5) return;
    bool const sharesPoint = frame.cursorPasses == 1 && frame.cursor[0].position == float2(state.cursorCanvasPoint);
    if (!sharesPoint) frame.cursor[frame.cursorPasses++] = blank;
    fillPointer(frame.cursor[frame.cursorPasses - 1], state, settings);
}

}

bool FrameUniforms::hasSamePointer(FrameUniforms const& other) const {
    return cursorPasses == other.cursorPasses && cursor[0] == other.cursor[0] && cursor[1] == other.cursor[1];
}

FrameUniforms frameUniforms(FrameState const& state, DemoProject const& project, CameraMeans const& means) {
    FrameUniforms frame;
    auto& composite = frame.composite;
    composite.canvasSize = float2(static_cast<double>(state.canvas.width), static_cast<double>(state.canvas.height));
    if (state.titleCard) {
        composite.bgMode = BackgroundMode::solid;
        composite.bgColor0 = float4(state.titleCard->background);
        return frame;
    }
    frame.camera = cameraPass(state, project, means);
    if (frame.camera && coversCanvas(*frame.camera)) {
        composite.bgMode = BackgroundMode::solid; // of which nothing is seen
        composite.bgColor0 = {0, 0, 0, 1};
    } else {
        composite.bgMode = backgroundMode(project.background);
        std::visit(BackgroundFiller{composite, state.time}, project.background.content);
        if (state.contentRect.isEmpty()) return frame;
        fillScreenLayer(composite, state, project.screen);
        fillZoom(composite, state, project);
        fillLoupe(composite, state);
    }
    fillCursorPasses(frame, state, project.cursor);
    return frame;
}

}
