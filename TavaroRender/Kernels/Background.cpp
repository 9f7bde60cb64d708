#include <TavaroRender/Kernels/Private/Background.h>

#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/Private/Colour.h>
#include <TavaroRender/Kernels/Private/Noise.h>
#include <TavaroRender/Kernels/Private/Sampling.h>

namespace tavaro {

namespace {

Float3 linearGradient(CompositeUniforms const& u, Float2 uv) {
    auto const t = saturate(dot(uv - 0.5f, u.bgParam) + 0.5f);
    return mixLinear(rgb(u.bgColor0), rgb(u.bgColor1), t);
}

Float3 radialGradient(CompositeUniforms const& u, Float2 uv) {
    auto const aspect = u.canvasSize.x / std::max(u.canvasSize.y, 1.0f);
    auto const d = (uv - u.bgParam) * Float2{aspect, 1};
    return mixLinear(rgb(u.bgColor0), rgb(u.bgColor1), saturate(length(d) * 1.35f));
}

Float3 mesh(CompositeUniforms const& u, Float2 uv) {
    auto const noise = valueNoise(uv * 3.0f + u.time * 0.02f);
    auto const weight = saturate(uv + (noise - 0.5f) * 0.22f);
    auto const top = mixLinear(rgb(u.bgColor0), rgb(u.bgColor1), weight.x);
    auto const bottom = mixLinear(rgb(u.bgColor2), rgb(u.bgColor3), weight.x);
    return mixLinear(top, bottom, weight.y);
}

Float3 aurora(CompositeUniforms const& u, Float2 uv) {
    auto const t = u.time * u.bgParam.x;
    auto const band = std::sin((uv.x * 2.4f + t) * 2.0f) * 0.5f + 0.5f;
    auto const secondBand = std::sin((uv.y * 1.7f - t * 1.3f) * 2.0f) * 0.5f + 0.5f;
    auto color = mixLinear(rgb(u.bgColor0), rgb(u.bgColor1), band);
    color = mixLinear(color, rgb(u.bgColor2), secondBand * 0.55f);
    return saturate(color + valueNoise(uv * 6.0f + t) * 0.035f);
}

}

bool backgroundIsImage(CompositeUniforms const& u, ImageView image) {
    return u.bgMode == BackgroundMode::image && image.width > 1 && image.height > 0;
}

Float3 backgroundColor(CompositeUniforms const& u, Float2 uv) {
    switch (u.bgMode) {
    case BackgroundMode::solid: return rgb(u.bgColor0);
    case BackgroundMode::linear: return linearGradient(u, uv);
    case BackgroundMode::radial: return radialGradient(u, uv);
    case BackgroundMode::mesh: return mesh(u, uv);
    case BackgroundMode::aurora: return aurora(u, uv);
    default: return {};
    }
}

Float3 backgroundBehind(CompositeUniforms const& u, ImageView image, Float2 point) {
    auto const uv = point / u.canvasSize;
    if (!backgroundIsImage(u, image)) return backgroundColor(u, uv);
    return sampleBilinear(image, aspectFillUV(uv, image.width, image.height, u.canvasSize));
}

// Half a step of noise hides the bands that 8 bits leave in a gradient.
float backgroundDither(Float2 point) { return (hash21(point) - 0.5f) / 255.0f; }

Float4 backgroundPixel(CompositeUniforms const& u, ImageView image, Float2 point) {
    auto const mode = u.bgMode;
    if (mode == BackgroundMode::none) return {};
    auto color = backgroundBehind(u, image, point);
    if (mode >= BackgroundMode::linear && mode <= BackgroundMode::aurora) color = color + backgroundDither(point);
    return withAlpha(color, 1);
}

}
