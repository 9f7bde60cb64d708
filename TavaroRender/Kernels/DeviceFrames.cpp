#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/Private/ScreenLayer.h>

namespace tavaro {

namespace {

/// A part in the colour of the device: `standard` has the luma `reference` in the standard finish.
Float3 tinted(CompositeUniforms const& u, Float3 standard, float reference) {
    if (!(u.frameTint.w > 0.001f)) return standard;
    auto const shade = luma(standard) / std::max(reference, 0.001f);
    return mix(standard, saturate(rgb(u.frameTint) * shade), u.frameTint.w);
}

Float3 browser(CompositeUniforms const& u, ScreenGeometry const& g, Float2 p) {
    auto const isDark = u.frameMode == FrameMode::browserDark;
    auto color = isDark ? Float3{0.145f, 0.153f, 0.176f} : Float3{0.925f, 0.925f, 0.933f};
    auto const bar = u.frameInset.y;
    auto const middle = u.clipOrigin.y + bar / 2;
    auto const radius = bar * 0.14f;
    Float3 const lights[]{{1.0f, 0.373f, 0.341f}, {1.0f, 0.741f, 0.180f}, {0.157f, 0.784f, 0.251f}};
    for (int i = 0; i < 3; ++i) {
        Float2 const center{u.clipOrigin.x + bar * 0.55f + static_cast<float>(i) * radius * 3.1f, middle};
        color = mix(color, lights[i], coverage(length(p - center) - radius));
    }
    auto const pillHeight = bar * 0.46f;
    auto const pill =
        sdRoundedBox(p - Float2{g.fullCenter.x, middle}, {u.clipSize.x * 0.26f, pillHeight / 2}, pillHeight / 2);
    return mix(color, isDark ? Float3{0.086f, 0.094f, 0.110f} : Float3{1, 1, 1}, coverage(pill));
}

Float3 macBook(CompositeUniforms const& u, ScreenGeometry const& g, Float2 p) {
    Float3 color{0.118f, 0.122f, 0.133f};
    if (p.y > g.openingMax.y) {
        auto const base = u.frameInset.w;
        auto const down = saturate((p.y - g.openingMax.y) / std::max(base, 1.0f));
        color = tinted(u, mix({0.180f, 0.188f, 0.200f}, {0.128f, 0.134f, 0.145f}, down), 0.185f);
        auto const depth = base * 0.30f;
        auto const lip =
            sdRoundedBox(p - Float2{g.openingCenter.x, g.openingMax.y}, {u.clipSize.x * 0.055f, depth}, depth * 0.7f);
        color = mix(color, {0.085f, 0.089f, 0.098f}, 1.0f - smoothstep(-1.0f, 1.5f, lip));
    } else if (p.y < g.openingMin.y) {
        auto const height = u.frameInset.y * 0.78f;
        Float2 const center{g.fullCenter.x, u.clipOrigin.y + u.frameInset.y / 2};
        auto const notch = sdRoundedBox(p - center, {u.clipSize.x * 0.055f, height / 2}, height * 0.35f);
        color = mix(color, {0.035f, 0.037f, 0.042f}, coverage(notch));
    }
    return color;
}

Float4 iMac(CompositeUniforms const& u, ScreenGeometry const& g, Float2 p) {
    auto const below = p.y - g.openingMax.y;
    if (below <= 0) return {0.118f, 0.122f, 0.133f, 1};
    auto const standTop = u.frameInset.w * chinShare;
    if (below <= standTop) return withAlpha(tinted(u, {0.812f, 0.820f, 0.836f}, 0.819f), 1);
    auto const k = saturate((below - standTop) / std::max(u.frameInset.w - standTop, 1.0f));
    auto const halfWidth = mix(u.clipSize.x * 0.085f, u.clipSize.x * 0.22f, k * k);
    auto const metal = tinted(u, mix({0.735f, 0.743f, 0.760f}, {0.606f, 0.614f, 0.632f}, k), 0.742f);
    return withAlpha(metal, coverage(std::abs(p.x - g.fullCenter.x) - halfWidth));
}

Float3 phoneOrTablet(CompositeUniforms const& u, ScreenGeometry const& g, Float2 p) {
    Float3 color{0.055f, 0.058f, 0.066f};
    if (u.frameTint.w > 0.001f) {
        auto const radius = std::clamp(u.frameRadius, 0.0f, std::min(g.fullHalf.x, g.fullHalf.y));
        auto const d = sdRoundedBox(p - g.fullCenter, g.fullHalf, radius);
        auto const rim = smoothstep(-1, 1, d + std::max(u.frameInset.x * 0.3f, 2.0f));
        auto const light = mix(1.10f, 1.0f, saturate((p.y - u.clipOrigin.y) / u.clipSize.y));
        color = mix(color, saturate(rgb(u.frameTint) * light), rim * u.frameTint.w);
    }
    if (u.frameMode == FrameMode::ipad) {
        Float2 const center{g.fullCenter.x, u.clipOrigin.y + u.frameInset.y / 2};
        color = mix(color, {0.020f, 0.022f, 0.030f}, coverage(length(p - center) - u.frameInset.y * 0.16f));
    }
    return color;
}

}

Float4 frameColor(CompositeUniforms const& u, ScreenGeometry const& g, Float2 p) {
    switch (u.frameMode) {
    case FrameMode::insetBand: return u.matColor;
    case FrameMode::browser:
    case FrameMode::browserDark: return withAlpha(browser(u, g, p), 1);
    case FrameMode::macbook: return withAlpha(macBook(u, g, p), 1);
    case FrameMode::imac: return iMac(u, g, p);
    case FrameMode::iphone:
    case FrameMode::ipad: return withAlpha(phoneOrTablet(u, g, p), 1);
    default: return {0.09f, 0.09f, 0.10f, 1};
    }
}

}
