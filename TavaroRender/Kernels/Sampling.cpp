#include <TavaroRender/Kernels/Private/Sampling.h>

#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/Private/Loupe.h>
#include <TavaroRender/Kernels/ScreenTexture.h>

namespace tavaro {

namespace {

Float3 texel(ImageView image, int x, int y) {
    auto const* p = image.row(y) + 4 * static_cast<std::ptrdiff_t>(x);
    return Float3{static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])} * (1.0f / 255.0f);
}

/// The four texels round a point, and where it lies between them.
struct TexelCell {
    TexelCell(ImageView image, Float2 uv) {
        auto const x = texelPosition(uv.x, image.width);
        auto const y = texelPosition(uv.y, image.height);
        auto const floorX = std::floor(x);
        auto const floorY = std::floor(y);
        x0 = std::clamp(static_cast<int>(floorX), 0, image.width - 1);
        x1 = std::clamp(static_cast<int>(floorX) + 1, 0, image.width - 1);
        y0 = std::clamp(static_cast<int>(floorY), 0, image.height - 1);
        y1 = std::clamp(static_cast<int>(floorY) + 1, 0, image.height - 1);
        fx = x - floorX;
        fy = y - floorY;
    }

    int x0, x1, y0, y1;
    float fx, fy;
};

float sharpenAmountFor(float up, float strength) { return saturate((up - 1.0f) * 0.6f) * 1.1f * strength; }

}

Float3 sampleBilinear(ImageView image, Float2 uv) {
    TexelCell const cell(image, uv);
    auto const row = [&](int y) { return mix(texel(image, cell.x0, y), texel(image, cell.x1, y), cell.fx); };
    return mix(row(cell.y0), row(cell.y1), cell.fy);
}

Float4 samplePixel(ImageView image, Float2 uv) {
    TexelCell const cell(image, uv);
    auto const alpha = [&](int x, int y) {
        return static_cast<float>(image.row(y)[4 * static_cast<std::ptrdiff_t>(x) + 3]) * (1.0f / 255.0f);
    };
    auto const row = [&](int y) { return mix(alpha(cell.x0, y), alpha(cell.x1, y), cell.fx); };
    return withAlpha(sampleBilinear(image, uv), mix(row(cell.y0), row(cell.y1), cell.fy));
}

Float2 aspectFillUV(Float2 uv, int imageWidth, int imageHeight, Float2 canvasSize) {
    auto const imageAspect = static_cast<float>(imageWidth) / static_cast<float>(std::max(imageHeight, 1));
    auto const canvasAspect = canvasSize.x / std::max(canvasSize.y, 1.0f);
    if (imageAspect > canvasAspect) return {(uv.x - 0.5f) * (canvasAspect / imageAspect) + 0.5f, uv.y};
    return {uv.x, (uv.y - 0.5f) * (imageAspect / canvasAspect) + 0.5f};
}

ScreenSampler::ScreenSampler(CompositeUniforms const& uniforms, ScreenTexture const& screen)
    : contentOrigin_(uniforms.contentOrigin)
    , contentSize_(uniforms.contentSize)
    , zoomCenter_(uniforms.zoomCenter)
    , cropOrigin_(uniforms.cropOrigin)
    , cropSize_(uniforms.cropSize)
    , zoom_(std::max(uniforms.zoomScale, 0.0001f)) {
    if (screen.isEmpty()) return;
    auto const width = static_cast<float>(screen.width()) * cropSize_.x;
    auto const height = static_cast<float>(screen.height()) * cropSize_.y;
    coverage_ = std::max(std::abs(width / (zoom_ * contentSize_.x)), std::abs(height / (zoom_ * contentSize_.y)));
    auto const up = uniforms.zoomScale * contentSize_.x / std::max(width, 1.0f);
    sharpenAmount_ = sharpenAmountFor(up, uniforms.sharpen);

    levels_.resize(static_cast<std::size_t>(screen.levelCount()));
    levelOfFrame_ = level(coverage_);
    auto const highest = level(coverage_ / leastMagnification(uniforms));
    levels_.resize(std::min(levels_.size(), static_cast<std::size_t>(highest) + 2));
    for (std::size_t i = 0; i < levels_.size(); ++i) {
        // A level that no sample reaches is not worth making.
        if (static_cast<float>(i) < highest + 1) levels_[i] = screen.ensureLevel(static_cast<int>(i));
    }
}

float ScreenSampler::level(float coverage) const {
    if (!(coverage > 1.0f)) return 0;
    return std::min(std::log2(coverage), static_cast<float>(levels_.size() - 1));
}

Float2 ScreenSampler::cropPoint(Float2 canvasPoint) const {
    auto const local = (canvasPoint - contentOrigin_) / contentSize_;
    return zoomCenter_ + (local - 0.5f) / zoom_;
}

Float2 ScreenSampler::textureUV(Float2 cropPoint) const { return cropOrigin_ + saturate(cropPoint) * cropSize_; }

Float3 ScreenSampler::sample(Float2 uv, float level) const {
    auto const lower = static_cast<std::size_t>(level);
    auto const blend = level - static_cast<float>(lower);
    auto const fine = sampleBilinear(levels_[lower], uv);
    return blend > 0 ? mix(fine, sampleBilinear(levels_[lower + 1], uv), blend) : fine;
}

Float3 ScreenSampler::sampleSharp(Float2 uv, float amount, float level) const {
    auto const center = sample(uv, level);
    if (amount <= 0.001f) return center;
    auto const dx = 1.0f / static_cast<float>(levels_[0].width);
    auto const dy = 1.0f / static_cast<float>(levels_[0].height);
    auto const north = sample(saturate(Float2{uv.x, uv.y - dy}), level);
    auto const south = sample(saturate(Float2{uv.x, uv.y + dy}), level);
    auto const west = sample(saturate(Float2{uv.x - dx, uv.y}), level);
    auto const east = sample(saturate(Float2{uv.x + dx, uv.y}), level);
    auto const mean = (north + south + east + west) * 0.25f;
    auto const lowest = min(min(min(north, south), min(east, west)), center);
    auto const highest = max(max(max(north, south), max(east, west)), center);
    return max(min(center + (center - mean) * amount, highest), lowest);
}

}
