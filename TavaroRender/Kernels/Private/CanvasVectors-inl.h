// Vectors of canvas pixels, for the kernels that draw over a finished canvas. Compiled once for each kind of vector
// unit, by the sources that include it.

#if defined(TAVARO_CANVAS_VECTORS) == defined(HWY_TARGET_TOGGLE)
#ifdef TAVARO_CANVAS_VECTORS
#undef TAVARO_CANVAS_VECTORS
#else
#define TAVARO_CANVAS_VECTORS
#endif

#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/FloatVectors-inl.h>

#include <cstdint>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

/// A vector of canvas pixels, channels 0…255.
struct CanvasPixels {
    Vec3 color;
    Vec alpha;

    HWY_INLINE void mixTo(Float3 to, Vec strength) {
        color = mixed(color, set({to.x * 255, to.y * 255, to.z * 255}), strength);
    }
    HWY_INLINE void darken(float to, Vec strength) { color = scaled(color, sub(set(1), mul(strength, set(1 - to)))); }
    HWY_INLINE void raiseAlpha(Vec strength) { alpha = hn::Max(alpha, mul(strength, set(255))); }
};

/// The smoothstep by a multiplication, to the canvas's precision.
HWY_INLINE Vec smooth(float edge0, float edge1, Vec v) {
    auto const share = 1 / (edge1 - edge0);
    auto const t = clamp01(mulAdd(v, set(share), set(-edge0 * share)));
    return mul(mul(t, t), sub(set(3), mul(set(2), t)));
}
HWY_INLINE Vec smoothlyCovered(Vec distance) { return sub(set(1), smooth(-1, 1, distance)); }

/// Opaque pixels of channels within 0…1, rounded to nearest.
HWY_INLINE VecInt packedOpaque(Vec3 const& color) {
    // Added to 2^23, a number's lowest bits are its whole part.
    auto const byteOf = [](Vec v) HWY_ATTR {
        auto const bits = hn::BitCast(TagInt(), mulAdd(v, set(255), set(8388608.0f)));
        return hn::And(bits, hn::Set(TagInt(), 255));
    };
    return hn::Or(hn::Or(byteOf(color.x), hn::ShiftLeft<8>(byteOf(color.y))),
                  hn::Or(hn::ShiftLeft<16>(byteOf(color.z)), hn::Set(TagInt(), static_cast<std::int32_t>(0xFF000000))));
}

/// Scales the channels of RGBA pixels, two at a time: `scaled` takes and gives one channel in the lower and one in the
/// upper half of each lane.
template<class Scaled> HWY_INLINE VecInt onChannelPairs(VecInt pixels, Scaled&& scaled) {
    auto const mask = hn::Set(TagInt(), 0x00FF00FF);
    hn::RebindToUnsigned<Tag> const bits;
    auto const others = hn::BitCast(TagInt(), hn::ShiftRight<8>(hn::BitCast(bits, pixels)));
    return hn::Or(scaled(hn::And(pixels, mask)), hn::ShiftLeft<8>(scaled(hn::And(others, mask))));
}

/// Every channel of a pixel times `share` (0…255, one for each pixel) ÷ 255, rounded to nearest.
HWY_INLINE VecInt scaledPixels(VecInt pixels, VecInt share) {
    return onChannelPairs(pixels, [&](VecInt pair) HWY_ATTR {
#if HWY_TARGET == HWY_SCALAR
        auto const half = [&](VecInt v) HWY_ATTR {
            auto const product = hn::Add(hn::Mul(v, share), hn::Set(TagInt(), 128));
            return hn::ShiftRight<8>(hn::Add(product, hn::ShiftRight<8>(product)));
        };
        return hn::Or(half(hn::And(pair, hn::Set(TagInt(), 255))), hn::ShiftLeft<16>(half(hn::ShiftRight<16>(pair))));
#else
        hn::Repartition<std::uint16_t, TagInt> const words;
        auto const both = hn::BitCast(words, hn::Or(share, hn::ShiftLeft<16>(share)));
        auto const product = hn::Add(hn::Mul(hn::BitCast(words, pair), both), hn::Set(words, 128));
        return hn::BitCast(TagInt(), hn::ShiftRight<8>(hn::Add(product, hn::ShiftRight<8>(product))));
#endif
    });
}

/// The same for shares of 0…65535, which keep a step of 1/255 to itself.
HWY_INLINE VecInt finelyScaledPixels(VecInt pixels, VecInt share) {
    return onChannelPairs(pixels, [&](VecInt pair) HWY_ATTR {
#if HWY_TARGET == HWY_SCALAR
        auto const half = [&](VecInt v) HWY_ATTR {
            return hn::ShiftRight<8>(hn::Add(hn::ShiftRight<8>(hn::Mul(v, share)), hn::Set(TagInt(), 128)));
        };
        return hn::Or(half(hn::And(pair, hn::Set(TagInt(), 255))), hn::ShiftLeft<16>(half(hn::ShiftRight<16>(pair))));
#else
        hn::Repartition<std::uint16_t, TagInt> const words;
        auto const both = hn::BitCast(words, hn::Or(share, hn::ShiftLeft<16>(share)));
        auto const product = hn::MulHigh(hn::ShiftLeft<8>(hn::BitCast(words, pair)), both);
        return hn::BitCast(TagInt(), hn::ShiftRight<8>(hn::Add(product, hn::Set(words, 128))));
#endif
    });
}

/// Calls `draw(pixels, x)`, which returns new pixels, for vectors of the pixels `begin` … `end` − 1 of a row; `x` is
/// the column of the first.
template<class Draw> HWY_INLINE void forPackedPixels(std::uint8_t* row, int begin, int end, Draw&& draw) {
    TagInt const whole;
    auto const n = static_cast<int>(hn::Lanes(whole));
    auto x = begin;
    for (; x + n <= end; x += n) {
        auto* const at = reinterpret_cast<std::int32_t*>(row + 4 * static_cast<std::ptrdiff_t>(x));
        hn::StoreU(draw(hn::LoadU(whole, at), x), whole, at);
    }
    if (x >= end) return;
    auto* const at = row + 4 * static_cast<std::ptrdiff_t>(x);
    auto const bytes = 4 * static_cast<std::size_t>(end - x);
    alignas(64) std::int32_t memory[16]{};
    std::memcpy(memory, at, bytes);
    hn::Store(draw(hn::Load(whole, memory), x), whole, memory);
    std::memcpy(at, memory, bytes);
}

/// Calls `draw(pixels, x)` for vectors of the pixels `begin` … `end` − 1 of a row, `x` being the column of the first.
template<class Draw> HWY_INLINE void forPixels(std::uint8_t* row, int begin, int end, Draw&& draw) {
    TagInt const whole;
    auto const n = static_cast<int>(hn::Lanes(whole));
    for (int x = begin; x < end; x += n) {
        auto* at = row + 4 * static_cast<std::ptrdiff_t>(x);
        alignas(64) std::int32_t memory[64];
        auto const isWhole = x + n <= end;
        auto const bytes = 4 * static_cast<std::size_t>(std::min(n, end - x));
        if (!isWhole) {
            std::memset(memory, 0, sizeof memory);
            std::memcpy(memory, at, bytes);
        }
        auto* from = isWhole ? reinterpret_cast<std::int32_t*>(at) : memory;
        auto const loaded = hn::LoadU(whole, from);
        CanvasPixels pixels{colorOf(loaded), channel<3>(loaded)};
        draw(pixels, x);
        hn::StoreU(packed(pixels.color, pixels.alpha), whole, from);
        if (!isWhole) std::memcpy(at, memory, bytes);
    }
}

/// Where the pixels' centres lie from `origin` along the row.
HWY_INLINE Vec centersFrom(int x, float origin) {
    return sub(hn::Iota(Tag(), static_cast<float>(x) + 0.5f), set(origin));
}

}
HWY_AFTER_NAMESPACE();

#endif
