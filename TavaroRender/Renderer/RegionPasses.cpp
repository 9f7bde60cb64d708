#include <TavaroRender/Renderer/Private/RegionPasses.h>

#include <algorithm>
#include <variant>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/FrameState.h>
#include <TavaroRender/Layers/Private/LayerAnimation.h>
#include <TavaroRender/Renderer/Private/UniformNumbers.h>

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
        pass.mode = mode;
        pass.texSize = float2(width, height);
        pass.origin = float2(rect.x, rect.y);
        pass.size = float2(rect.width, rect.height);
        if (mode == RegionMode::blur) {
            double const share = std::clamp(rect.height * blurShare, smallestBlur, largestBlur);
            pass.radius = static_cast<float>(std::max(share * height, 4.0));
        }
        if (mode == RegionMode::highlight) {
            pass.color = float4(color, strength);
            pass.color.w = std::clamp(pass.color.w, 0.0f, 1.0f);
        }
        passes.push_back(pass);
    }
};

void addOverlay(RegionFiller& filler, Overlay const& overlay, double at) {
    auto const& content = overlay.kind.content;
    if (auto const* blur = std::get_if<OverlayKind::Blur>(&content)) filler.add(blur->rect, RegionMode::blur);
    if (auto const* mask = std::get_if<OverlayKind::Mask>(&content)) filler.add(mask->rect, RegionMode::mask);
    if (auto const* highlight = std::get_if<OverlayKind::Highlight>(&content))
        filler.add(highlight->rect, RegionMode::highlight, overlay.backgroundColor.value_or(dimming),
                   overlayPose(overlay, at).opacity);
}

}

std::vector<RegionUniforms> regionPasses(FrameState const& state, int width, int height) {
    std::vector<RegionUniforms> passes;
    RegionFiller filler{width, height, passes};
    for (auto const& redaction : state.redactions) filler.add(redaction.rect, modeOf<RegionMode>(redaction.style));
    for (auto const* overlay : state.visibleOverlays) addOverlay(filler, *overlay, state.editTime);
    return passes;
}

}
