#include <TavaroRender/Kernels/Private/ScreenLayer.h>

#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/Private/Sampling.h>

namespace tavaro {

ScreenGeometry::ScreenGeometry(CompositeUniforms const& u) {
    isEmpty = !(u.clipSize.x > 0 && u.clipSize.y > 0 && u.contentSize.x > 0 && u.contentSize.y > 0);
    fullHalf = u.clipSize * 0.5f;
    fullCenter = u.clipOrigin + fullHalf;
    auto const outer = u.frameMode == FrameMode::none ? u.cornerRadius : std::max(u.frameRadius, u.cornerRadius);
    radius = std::clamp(outer, 0.0f, std::max(std::min(fullHalf.x, fullHalf.y), 0.0f));
    openingMin = u.contentOrigin;
    openingMax = u.contentOrigin + u.contentSize;
    if (u.frameMode != FrameMode::none) {
        auto const end = u.clipOrigin + u.clipSize;
        openingMin = max(openingMin, {u.clipOrigin.x + u.frameInset.x, u.clipOrigin.y + u.frameInset.y});
        openingMax = min(openingMax, {end.x - u.frameInset.z, end.y - u.frameInset.w});
    }
    openingHalf = (openingMax - openingMin) * 0.5f;
    openingCenter = openingMin + openingHalf;
    innerRadius = std::min(u.innerRadius, std::min(openingHalf.x, openingHalf.y));
}

bool ScreenGeometry::clipHolds(Float2 p) const {
    auto const q = p - fullCenter;
    return !isEmpty && std::abs(q.x) <= fullHalf.x && std::abs(q.y) <= fullHalf.y;
}

bool hasRoundOpening(CompositeUniforms const& u) {
    return u.frameMode == FrameMode::insetBand || (u.frameMode != FrameMode::none && u.innerRadius > 0);
}

bool shadowIsVisible(CompositeUniforms const& u) { return u.shadowRadius > 0.5f && u.shadowOpacity > 0.001f; }

float shadowStrength(CompositeUniforms const& u, ScreenGeometry const& g, Float2 point) {
    auto const stand = u.frameMode == FrameMode::imac ? u.frameInset.w * standShare : 0.0f;
    Float2 const half{g.fullHalf.x, g.fullHalf.y - stand / 2};
    auto const center = g.fullCenter + Float2{0, u.shadowOffsetY - stand / 2};
    auto const d = sdRoundedBox(point - center, half, g.radius);
    auto const s = 1.0f - smoothstep(-u.shadowRadius * 0.25f, u.shadowRadius, d);
    return s * s * u.shadowOpacity;
}

bool blursMotion(CompositeUniforms const& u) { return u.blurStrength > 0.001f && u.blurTaps > 1; }

int motionBlurTaps(CompositeUniforms const& u) { return std::min(u.blurTaps, 16); }

namespace {

float motionBlurPlace(int tap, int taps) { return static_cast<float>(tap) / static_cast<float>(taps - 1) - 0.5f; }

}

float motionBlurWeight(int tap, int taps) { return 1.0f - std::abs(motionBlurPlace(tap, taps)) * 1.2f; }

Float2 motionBlurShift(CompositeUniforms const& u, int tap, int taps) {
    return u.blurVector * motionBlurPlace(tap, taps) / std::max(u.zoomScale, 0.0001f);
}

Float3 contentColor(CompositeUniforms const& u, ScreenSampler const& sampler, Float2 point) {
    auto const source = sampler.cropPoint(point);
    if (!blursMotion(u))
        return sampler.sampleSharp(sampler.textureUV(source), sampler.sharpenAmount(), sampler.levelOfFrame());
    auto const taps = motionBlurTaps(u);
    Float3 sum;
    float total = 0;
    for (int i = 0; i < taps; ++i) {
        auto const weight = motionBlurWeight(i, taps);
        auto const shifted = source + motionBlurShift(u, i, taps);
        sum = sum + sampler.sample(sampler.textureUV(shifted), sampler.levelOfFrame()) * weight;
        total += weight;
    }
    return sum * (1.0f / total);
}

float islandDistance(CompositeUniforms const& u, ScreenGeometry const& g, Float2 point) {
    auto const height = u.frameInset.y * 0.62f;
    Float2 const center{g.openingCenter.x, g.openingMin.y + height * 0.95f};
    return sdRoundedBox(point - center, {g.openingHalf.x * 0.23f, height / 2}, height / 2);
}

Float4 screenLayer(CompositeUniforms const& u, ScreenGeometry const& g, ScreenSampler const& sampler, Float2 point) {
    auto const d = g.distance(point);
    auto inside = coverage(d);
    if (!(inside > 0.001f)) return {};

    auto const mode = u.frameMode;
    Float3 layer;
    if (mode != FrameMode::none && !g.openingHolds(point)) {
        auto const frame = frameColor(u, g, point);
        layer = rgb(frame);
        inside *= frame.w;
    } else {
        layer = contentColor(u, sampler, point);
        if (hasRoundOpening(u)) {
            auto const frame = frameColor(u, g, point);
            auto const share = smoothstep(-1, 1, g.innerDistance(point));
            layer = mix(layer, rgb(frame), share);
            inside *= mix(1, frame.w, share);
        }
    }
    if (mode == FrameMode::iphone) layer = mix(layer, islandColor, coverage(islandDistance(u, g, point)));
    if (u.borderWidth > 0.05f) {
        auto const border = coverage(std::abs(d) - u.borderWidth / 2) * u.borderColor.w;
        layer = mix(layer, rgb(u.borderColor), border);
    }
    return withAlpha(layer, inside);
}

}
