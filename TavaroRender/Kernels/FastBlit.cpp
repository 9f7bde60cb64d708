#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/FastBlit.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/CanvasVectors-inl.h>
#include <TavaroRender/Kernels/Private/TexelVectors-inl.h>

#include <TavaroRender/Kernels/Private/FastBlit.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

/// Lays premultiplied colours 0…255 over the canvas. Alpha too weak to count draws nothing, whatever the colours say.
HWY_INLINE void layOver(CanvasPixels& pixels, Vec3 const& color, Vec alpha, float opacity) {
    auto const strength = mul(alpha, set(opacity / 255));
    auto const isDrawn = hn::Gt(strength, set(0.0001f));
    auto const rest = sub(set(1), hn::IfThenElseZero(isDrawn, strength));
    auto const laid = [&](Vec under, Vec over) HWY_ATTR {
        return add(mul(under, rest), hn::IfThenElseZero(isDrawn, mul(over, set(opacity))));
    };
    pixels.color = {laid(pixels.color.x, color.x), laid(pixels.color.y, color.y), laid(pixels.color.z, color.z)};
    pixels.raiseAlpha(hn::IfThenElseZero(isDrawn, strength));
}

/// Channel by channel, up to 255.
HWY_INLINE VecInt saturatedSum(VecInt a, VecInt b) {
#if HWY_TARGET == HWY_SCALAR
    auto sum = hn::Zero(TagInt());
    for (int shift = 0; shift < 32; shift += 8) {
        auto const channelOf = [&](VecInt v) { return static_cast<std::uint32_t>(hn::GetLane(v)) >> shift & 255; };
        auto const total = std::min(channelOf(a) + channelOf(b), 255u);
        sum = hn::Or(sum, hn::Set(TagInt(), static_cast<std::int32_t>(total << shift)));
    }
    return sum;
#else
    hn::Repartition<std::uint8_t, TagInt> const bytes;
    return hn::BitCast(TagInt(), hn::SaturatedAdd(hn::BitCast(bytes, a), hn::BitCast(bytes, b)));
#endif
}

/// The same for whole pixels at full opacity, in whole numbers.
HWY_INLINE VecInt laidOver(VecInt under, VecInt layer) {
    TagInt const whole;
    hn::RebindToUnsigned<TagInt> const bits;
    auto const alphaOf = [&](VecInt v)
                             HWY_ATTR { return hn::BitCast(whole, hn::ShiftRight<24>(hn::BitCast(bits, v))); };
    auto const alpha = alphaOf(layer);
    auto const rest = scaledPixels(under, hn::Sub(hn::Set(whole, 255), alpha));
    auto const color = hn::And(hn::Set(whole, 0x00FFFFFF), saturatedSum(rest, layer));
    auto const laid = hn::Or(color, hn::ShiftLeft<24>(hn::Max(alphaOf(under), alpha)));
    return hn::IfThenElse(hn::Eq(alpha, hn::Zero(whole)), under, laid);
}

/// The layer's pixels are those of the canvas, `texels` being the one of column `begin`.
void directRow(std::uint8_t const* texels, float opacity, std::uint8_t* row, int begin, int end) {
    TagInt const whole;
    auto const n = static_cast<int>(hn::Lanes(whole));
    auto const zero = hn::Zero(whole);
    auto const alphaBits = hn::Set(whole, static_cast<std::int32_t>(0xFF000000));
    forPackedPixels(row, begin, end, [&](VecInt under, int x) HWY_ATTR {
        auto const* const from = reinterpret_cast<std::int32_t const*>(texels) + (x - begin);
        alignas(64) std::int32_t memory[16];
        if (x + n > end) {
            hn::Store(zero, whole, memory);
            std::memcpy(memory, from, 4 * static_cast<std::size_t>(end - x));
        }
        auto const layer = x + n > end ? hn::Load(whole, memory) : hn::LoadU(whole, from);
        auto const alpha = hn::And(layer, alphaBits);
        if (hn::AllTrue(whole, hn::Eq(alpha, zero))) return under;
        if (opacity == 1) return laidOver(under, layer);
        CanvasPixels pixels{colorOf(under), channel<3>(under)};
        layOver(pixels, colorOf(layer), channel<3>(layer), opacity);
        return packed(pixels.color, pixels.alpha);
    });
}

void stretchedRow(ImageView layer, AxisPlan const& columns, AxisPlace place, float opacity, std::uint8_t* row,
                  int begin, int end) {
    forPixels(row, begin, end, [&](CanvasPixels& pixels, int x) HWY_ATTR {
        CellVectors const cells(layer, columns, static_cast<std::size_t>(x - begin), place);
        layOver(pixels, cells.mixedColor(), cells.mixedChannel<3>(), opacity);
    });
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(directRow);
HWY_EXPORT(stretchedRow);

namespace {

// Closer to a texel's centre than this, px, its neighbour does not show.
constexpr float sameTexel = 1.0f / 1024;

/// The pixels of one axis whose centres lie on the layer.
struct Extent {
    int begin = 0;
    int end = 0;
};

float localOf(int pixel, float origin, float size) { return (pixelCenter(pixel, 0).x - origin) / size; }

Extent extentOf(float origin, float size, int canvasSize) {
    auto const isOnLayer = [&](int pixel) {
        auto const local = localOf(pixel, origin, size);
        return local >= 0 && local <= 1;
    };
    auto const low = std::min(origin, origin + size);
    auto const high = std::max(origin, origin + size);
    Extent result{placeWithin(low - 2, canvasSize), placeWithin(high + 3, canvasSize)};
    while (result.begin < result.end && !isOnLayer(result.begin)) ++result.begin;
    while (result.begin < result.end && !isOnLayer(result.end - 1)) --result.end;
    return result;
}

/// The texel whose centre a place lies on; −1 between two.
int texelAt(AxisPlace place) {
    if (place.between < sameTexel) return place.first;
    return place.between > 1 - sameTexel ? place.first + 1 : -1;
}

}

FastBlit::FastBlit(BlitUniforms const& uniforms, ImageView layer, MutableImageView canvas)
    : layer_(layer)
    , canvas_(canvas)
    , uniforms_(uniforms) {
    if (layer.isEmpty() || !(uniforms.opacity > 0)) return;
    auto const& u = uniforms_;
    auto const across = extentOf(u.origin.x, u.size.x, canvas.width);
    auto const down = extentOf(u.origin.y, u.size.y, canvas.height);
    if (across.begin >= across.end || down.begin >= down.end) return;
    left_ = across.begin;
    right_ = across.end;
    top_ = down.begin;
    bottom_ = down.end;
    columns_.fill(right_ - left_, layer.width, [&](int i) { return localOf(left_ + i, u.origin.x, u.size.x); });
    shift_ = texelAt({columns_.first[0], columns_.between[0]});
    isDirect_ = shift_ >= 0 && shift_ + right_ - left_ <= layer.width;
    for (std::size_t i = 0; isDirect_ && i < static_cast<std::size_t>(right_ - left_); ++i)
        isDirect_ = texelAt({columns_.first[i], columns_.between[i]}) == shift_ + static_cast<int>(i);
}

void FastBlit::draw(int begin, int end) const {
    auto const& u = uniforms_;
    for (int y = top_ + begin; y < top_ + end; ++y) {
        auto const place = axisPlace(localOf(y, u.origin.y, u.size.y), layer_.height);
        if (auto const texelRow = texelAt(place); isDirect_ && texelRow >= 0) {
            auto const* texels = layer_.row(texelRow) + 4 * static_cast<std::ptrdiff_t>(shift_);
            HWY_DYNAMIC_DISPATCH(directRow)(texels, u.opacity, canvas_.row(y), left_, right_);
        } else {
            HWY_DYNAMIC_DISPATCH(stretchedRow)(layer_, columns_, place, u.opacity, canvas_.row(y), left_, right_);
        }
    }
}

}
#endif
