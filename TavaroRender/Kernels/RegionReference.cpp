#include <TavaroRender/Kernels/Private/Noise.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>
#include <TavaroRender/Kernels/Private/Reference.h>
#include <TavaroRender/Kernels/Private/RegionFormula.h>
#include <TavaroRender/Kernels/Private/Sampling.h>
#include <TavaroRender/Kernels/RegionUniforms.h>

#include <cstdint>

namespace tavaro {

namespace {

constexpr float outsideBy = 3; // px from the region to the places that a mask takes its colours from

using Sums = std::array<std::int64_t, 4>;

/// Adds up what the places of a blur read along one axis.
template<class Read> Sums summed(BlurPlaces const& places, int size, Read&& read) {
    Sums sums{};
    auto const add = [&](Sums const& values, std::int64_t times) {
        for (std::size_t c = 0; c < 4; ++c) sums[c] += values[c] * times;
    };
    if (places.before > 0) add(read(0), places.before);
    for (int i = places.first; i <= places.last; i += 2) add(read(i), 1);
    if (places.after > 0) add(read(size - 1), places.after);
    return sums;
}

Float4 blurred(ImageView source, int x, int y, int reach) {
    BlurPlaces const columns(x, reach, source.width);
    auto const sum = summed(BlurPlaces(y, reach, source.height), source.height, [&](int rowIndex) {
        auto const* row = source.row(rowIndex);
        return summed(columns, source.width, [&](int column) {
            auto const* p = row + 4 * static_cast<std::ptrdiff_t>(column);
            return Sums{p[0], p[1], p[2], p[3]};
        });
    });
    auto const count = static_cast<float>(reach + 1) * static_cast<float>(reach + 1) * 255.0f;
    auto const mean = [&](std::size_t c) { return static_cast<float>(sum[c]) / count; };
    return {mean(0), mean(1), mean(2), mean(3)};
}

Float4 tinted(Float4 pixel, Float4 color) { return withAlpha(mix(rgb(pixel), rgb(color), color.w), pixel.w); }

/// The points' colours, the nearer the stronger.
Float4 patch(std::array<MaskPoint, 8> const& points, Float2 local) {
    Float4 sum;
    float total = 0;
    for (auto const& point : points) {
        auto const way = local - point.local;
        auto const distance = dot(way, way); // of a region without extent not a number
        auto const weight = 1.0f / (distance > 0.001f ? distance : 0.001f);
        sum = withAlpha(rgb(sum) + rgb(point.color) * weight, sum.w + point.color.w * weight);
        total += weight;
    }
    return withAlpha(rgb(sum) * (1.0f / total), sum.w / total);
}

}

int blurReach(RegionUniforms const& u) { return std::max(placeWithin(u.radius, 1 << 22), 1); }

BlurPlaces::BlurPlaces(int center, int reach, int size)
    : before(reach > center ? (reach - center + 1) / 2 : 0)
    , first(center - reach + 2 * before) {
    auto const pastEnd = center + reach - (size - 1);
    after = pastEnd > 0 ? (pastEnd + 1) / 2 : 0;
    last = center + reach - 2 * after;
}

std::array<MaskPoint, 8> maskPoints(RegionUniforms const& u, ImageView source) {
    constexpr std::array<Float2, 8> places{
        {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0.5f, 0}, {1, 0.5f}, {0.5f, 1}, {0, 0.5f}}};
    std::array<MaskPoint, 8> points;
    auto const outside = Float2{outsideBy, outsideBy} / u.texSize;
    for (std::size_t i = 0; i < places.size(); ++i) {
        auto const outward = places[i] * 2.0f - 1.0f; // −1, 0 or 1 on each axis
        points[i] = {places[i], samplePixel(source, u.origin + places[i] * u.size + outward * outside)};
    }
    return points;
}

void regionEffectReference(RegionUniforms const& u, ImageView source, MutableImageView target, int rowBegin,
                           int rowEnd) {
    auto const mode = u.mode;
    auto const reach = blurReach(u);
    auto const points = mode == RegionMode::mask ? maskPoints(u, source) : std::array<MaskPoint, 8>{};
    auto const changed = [&](int x, int y) -> Float4 {
        auto const point = pixelCenter(x, y);
        auto const pixel = loadPixel(source.row(y) + 4 * static_cast<std::ptrdiff_t>(x));
        auto const isInside = isWithin(point.x, u.texSize.x, u.origin.x, u.size.x) &&
                              isWithin(point.y, u.texSize.y, u.origin.y, u.size.y);
        switch (mode) {
        case RegionMode::blur: return isInside ? blurred(source, x, y, reach) : pixel;
        case RegionMode::highlight: return isInside ? pixel : tinted(pixel, u.color);
        case RegionMode::fill: return isInside ? tinted(pixel, u.color) : pixel;
        case RegionMode::mask: break;
        default: return pixel;
        }
        if (!isInside) return pixel;
        auto const color = patch(points, (point / u.texSize - u.origin) / u.size);
        auto const grain = (hash21({static_cast<float>(x), static_cast<float>(y)}) - 0.5f) / 255.0f;
        return withAlpha(rgb(color) + grain, color.w);
    };
    for (int y = rowBegin; y < rowEnd; ++y)
        for (int x = 0; x < target.width; ++x)
            storePixel(target.row(y) + 4 * static_cast<std::ptrdiff_t>(x), changed(x, y));
}

}
