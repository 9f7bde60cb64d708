#include <TavaroRender/Layers/Private/LayerAnimation.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include <TavaroCore/Values/Easing.h>

namespace tavaro {

namespace {

constexpr double slideWay = 0.045; // of the canvas's smaller side
constexpr double smallScale = 0.8;
constexpr double springScale = 0.55;
constexpr double popScale = 0.82;
constexpr double cardSeconds = 0.6;
constexpr double captionInSeconds = 0.16;
constexpr double captionOutSeconds = 0.12;

/// How far in a layer is at one end of its time: 0 away, 1 there.
struct Progress {
    double in = 1;
    double out = 1;
};

Progress progress(double at, double duration, double in, double out) {
    in = std::isfinite(in) ? std::max(in, 0.0) : 0;
    out = std::isfinite(out) ? std::max(out, 0.0) : 0;
    if (double const both = in + out; both > duration && both > 0) {
        in *= std::max(duration, 0.0) / both;
        out *= std::max(duration, 0.0) / both;
    }
    return {in > 0 ? std::clamp(at / in, 0.0, 1.0) : 1, out > 0 ? std::clamp((duration - at) / out, 0.0, 1.0) : 1};
}

/// Swings past 1 by about a tenth and settles there at p = 1.
double spring(double p) {
    constexpr double swing = 2.5 * std::numbers::pi;
    return p >= 1 ? 1 : 1 - std::exp(-6 * p) * std::cos(swing * p);
}

/// A fast fade that lets the movement be seen.
double soonVisible(double p) { return apply(Easing::easeOut, std::min(p * 1.6, 1.0)); }

enum class End { in, out };

LayerPose pose(OverlayAnimation animation, double p, End end) {
    double const eased = apply(Easing::easeOut, p);
    switch (animation) {
    case OverlayAnimation::none: break;
    case OverlayAnimation::fade: return {.opacity = apply(Easing::smooth, p)};
    case OverlayAnimation::slideUp:
        return {.opacity = soonVisible(p), .drop = (end == End::in ? 1 : -1) * slideWay * (1 - eased)};
    case OverlayAnimation::slideDown:
        return {.opacity = soonVisible(p), .drop = (end == End::in ? -1 : 1) * slideWay * (1 - eased)};
    case OverlayAnimation::scale: return {.opacity = soonVisible(p), .scale = smallScale + (1 - smallScale) * eased};
    case OverlayAnimation::typewriter: return {.opacity = p > 0 ? 1.0 : 0.0, .shown = p};
    case OverlayAnimation::spring: {
        double const reached = end == End::in ? spring(p) : eased;
        return {.opacity = soonVisible(p), .scale = springScale + (1 - springScale) * reached};
    }
    }
    return {};
}

LayerPose combined(LayerPose const& a, LayerPose const& b) {
    return {a.opacity * b.opacity, a.drop + b.drop, a.scale * b.scale, std::min(a.shown, b.shown)};
}

}

LayerPose overlayPose(Overlay const& overlay, double at) {
    double const t = at - overlay.start;
    auto const seconds = [&](OverlayAnimation animation) {
        return animation == OverlayAnimation::none ? 0 : overlay.animationDuration;
    };
    auto const p = progress(t, overlay.duration, seconds(overlay.animationIn), seconds(overlay.animationOut));
    return combined(pose(overlay.animationIn, p.in, End::in), pose(overlay.animationOut, p.out, End::out));
}

LayerPose cardPose(TitleCard const& card, double at) {
    double const seconds = card.animation == OverlayAnimation::none ? 0 : cardSeconds;
    auto const p = progress(at, card.duration, seconds, seconds);
    return combined(pose(card.animation, p.in, End::in), pose(card.animation, p.out, End::out));
}

LayerPose captionPose(CaptionAnimation animation, CaptionCue const& cue, double at) {
    if (animation == CaptionAnimation::none) return {};
    auto const p = progress(at - cue.start, cue.duration, captionInSeconds, captionOutSeconds);
    double const eased = apply(Easing::easeOut, p.in);
    LayerPose result{.opacity = soonVisible(p.in) * p.out};
    if (animation == CaptionAnimation::pop) result.scale = popScale + (1 - popScale) * spring(p.in);
    if (animation == CaptionAnimation::slideUp) result.drop = slideWay * 0.5 * (1 - eased);
    return result;
}

}
