#include <TavaroRender/Renderer/Private/RegionPasses.h>

#include <algorithm>
#include <variant>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/FrameState.h>

namespace tavaro {

namespace {

// A blur must leave nothing of a line of text to read: its square spans most of the region's height, and never less
// than a few letters of a usual screen.
constexpr double blurShare = 0.45;     // of the region's height
constexpr double smallestBlur = 0.012; // of the recording's height
constexpr double largestBlur = 0.08;
constexpr RGBAColor dimming{0, 0, 0, 0.55}; // of what a highlight leaves outside

struct RegionFiller {
    int width;
    int height;
    std::vector<RegionUniforms>& passes;

    void add(NormalizedRect const& wanted, RegionMode mode, RGBAColor const& color = {}, double strength = 1) {
        auto const rect = wanted.inset(0, 0); // inside the picture
        if (!(rect.area() > 0) || strength <= 0) return;
        RegionUniforms pass;
        pass.mode = static_cast<std::int32_t>(mode);
        pass.texSize = {static_cast<float>(width), static_cast<float>(height)};
        pass.origin = {static_cast<float>(rect.x), static_cast<float>(rect.y)};
        pass.size = {static_cast<float>(rect.width), static_cast<float>(rect.height)};
        if (mode == RegionMode::blur) {
            double const share = std::clamp(rect.height * blurShare, smallestBlur, largestBlur);
            pass.radius = static_cast<float>(std::max(share * height, 4.0));
        }
        if (mode == RegionMode::highlight || mode == RegionMode::fill)
            pass.color = {static_cast<float>(color.r), static_cast<float>(color.g), static_cast<float>(color.b),
                          static_cast<float>(std::clamp(color.a * strength, 0.0, 1.0))};
        passes.push_back(pass);
    }
};

/// 0…1: how far an overlay has come in, or is still there.
double presence(Overlay const& overlay, double at) {
    double const ramp = std::min(overlay.animationDuration, overlay.duration / 2);
    auto const share = [&](double seconds, OverlayAnimation animation) {
        return animation == OverlayAnimation::none || ramp <= 0 ? 1.0 : std::clamp(seconds / ramp, 0.0, 1.0);
    };
    double const t = std::min(share(at - overlay.start, overlay.animationIn),
                              share(overlay.range().end() - at, overlay.animationOut));
    return t * t * (3 - 2 * t);
}

void addOverlay(RegionFiller& filler, Overlay const& overlay, double at) {
    auto const& content = overlay.kind.content;
    if (auto const* blur = std::get_if<OverlayKind::Blur>(&content)) filler.add(blur->rect, RegionMode::blur);
    if (auto const* mask = std::get_if<OverlayKind::Mask>(&content)) filler.add(mask->rect, RegionMode::mask);
    if (auto const* highlight = std::get_if<OverlayKind::Highlight>(&content))
        filler.add(highlight->rect, RegionMode::highlight, overlay.backgroundColor.value_or(dimming),
                   presence(overlay, at));
    if (auto const* box = std::get_if<OverlayKind::Box>(&content); box && overlay.backgroundColor)
        filler.add(box->rect, RegionMode::fill, *overlay.backgroundColor, presence(overlay, at));
}

}

std::vector<RegionUniforms> regionPasses(FrameState const& state, int width, int height) {
    std::vector<RegionUniforms> passes;
    RegionFiller filler{width, height, passes};
    for (auto const& redaction : state.redactions)
        filler.add(redaction.rect, redaction.style == RedactionStyle::blur ? RegionMode::blur : RegionMode::mask);
    for (auto const* overlay : state.visibleOverlays) addOverlay(filler, *overlay, state.editTime);
    return passes;
}

}
