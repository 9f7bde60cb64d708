#include <TavaroRender/Kernels/Private/Loupe.h>

#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/Private/Background.h>
#include <TavaroRender/Kernels/Private/Sampling.h>
#include <TavaroRender/Kernels/Private/ScreenLayer.h>

namespace tavaro {

namespace {

constexpr int rimTaps = 4;
constexpr Float3 white{1, 1, 1};

float presenceOf(CompositeUniforms const& u) { return smoothstep(0.0f, 0.45f, u.loupePresence); }

float hairline(CompositeUniforms const& u, float distance) {
    return 1.0f - smoothstep(0.0f, 1.4f, std::abs(distance - u.loupeRadius - 1.2f));
}

/// The canvas at a point, as it would be without the lens and with no pixel grid between.
Float3 canvasBehind(LoupeScene const& scene, Float2 point, float sharpen, float magnification) {
    if (!scene.geometry.clipHolds(point) || scene.sampler.isEmpty())
        return backgroundBehind(scene.uniforms, scene.background, point);
    auto const& sampler = scene.sampler;
    auto const uv = sampler.textureUV(sampler.cropPoint(point));
    // The lens spreads a recorded pixel over more of the canvas, so that a finer level serves.
    return sampler.sampleSharp(uv, sharpen, sampler.level(sampler.coverage() / magnification));
}

}

bool loupeIsVisible(CompositeUniforms const& u) { return u.loupeRadius > 0.5f && u.loupePresence > 0.001f; }

float leastMagnification(CompositeUniforms const& u) {
    if (!loupeIsVisible(u)) return 1;
    // The colour fringe takes up to 0.6% per unit of magnification off the middle one; a little more covers rounding.
    auto const fringe = 0.999f - 0.006f * std::abs(u.loupeMag - 1.0f);
    return std::max(std::min(u.loupeMag, 1.0f) * fringe, 0.0001f);
}

float loupeMagnification(CompositeUniforms const& u, float share) {
    return mix(u.loupeMag, 1.0f, smoothstep(loupeFlatShare, 1.0f, share));
}

float loupeReach(CompositeUniforms const& u) { return u.loupeRadius * (1.35f + 0.07f) + 2.0f; }

Float3 seenThroughLens(LoupeScene const& scene, Float2 offset) {
    auto const& u = scene.uniforms;
    auto const distance = length(offset);
    auto const share = distance / u.loupeRadius;
    auto const isRim = share > loupeFlatShare;
    auto const taps = isRim ? rimTaps : 1;
    auto const sharpen = isRim ? 0.0f : scene.sampler.sharpenAmount();
    auto const fringe = smoothstep(0.86f, 1.0f, share) * 0.006f * (u.loupeMag - 1.0f);
    auto const direction = normalized(offset);
    Float3 sum;
    for (int k = 0; k < taps; ++k) {
        auto const jitter = isRim ? (static_cast<float>(k) + 0.5f) / static_cast<float>(rimTaps) - 0.5f : 0.0f;
        auto const tap = offset + direction * jitter;
        auto const middle = loupeMagnification(u, length(tap) / u.loupeRadius);
        auto const seen = [&](float channel) {
            auto const magnification = std::max(middle * (1.0f + (channel - 1.0f) * fringe), 0.0001f);
            return canvasBehind(scene, u.loupeCenter + tap / magnification, sharpen, magnification);
        };
        if (fringe == 0)
            sum = sum + seen(1);
        else
            sum = sum + Float3{seen(0).x, seen(1).y, seen(2).z};
    }
    return sum * (1.0f / static_cast<float>(taps));
}

Float3 withGlass(CompositeUniforms const& u, Float3 color, Float2 offset) {
    auto const distance = length(offset);
    auto const n = offset / u.loupeRadius;
    auto const share = distance / u.loupeRadius;
    color = color * (1.0f - smoothstep(0.55f, 1.0f, share) * 0.10f);
    auto const spot = 1.0f - smoothstep(0.0f, 0.55f, length(n - Float2{-0.38f, -0.46f}));
    color = mix(color, white, spot * spot * 0.22f);
    auto const band = smoothstep(0.86f, 0.97f, share) * (1.0f - smoothstep(0.97f, 1.0f, share));
    auto const light = saturate(dot(normalized(n), normalized({-0.6f, -0.8f})));
    color = mix(color, white, band * light * 0.55f);
    auto const ring = 1.0f - smoothstep(0.6f, 1.8f, std::abs(share - 0.995f) * u.loupeRadius);
    color = mix(color, white, ring * 0.65f);
    return mix(color, {}, hairline(u, distance) * 0.25f);
}

float lensCoverage(CompositeUniforms const& u, Float2 offset) {
    auto const distance = length(offset);
    auto const presence = presenceOf(u);
    auto const lens = (1.0f - smoothstep(u.loupeRadius - 1.0f, u.loupeRadius + 1.0f, distance)) * presence;
    return std::max(lens, hairline(u, distance) * 0.25f * presence);
}

float loupeShadow(CompositeUniforms const& u, Float2 offset) {
    if (!(length(offset) / u.loupeRadius > 1.0f)) return 0;
    auto const ratio = length(offset - Float2{0, u.loupeRadius * 0.07f}) / u.loupeRadius;
    if (!(ratio > 0.92f && ratio < 1.35f)) return 0;
    return (1.0f - smoothstep(0.96f, 1.32f, ratio)) * 0.42f * presenceOf(u);
}

Float4 withLoupe(LoupeScene const& scene, Float4 pixel, Float2 point) {
    auto const& u = scene.uniforms;
    auto const offset = point - u.loupeCenter;
    if (auto const shadow = loupeShadow(u, offset); shadow > 0) pixel = withAlpha(mix(rgb(pixel), {}, shadow), pixel.w);
    if (!(length(offset) / u.loupeRadius < 1.0f + 1.5f / u.loupeRadius)) return pixel;
    return laidOver(pixel, withGlass(u, seenThroughLens(scene, offset), offset), lensCoverage(u, offset));
}

}
