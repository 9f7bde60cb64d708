// Vectors of canvas pixels, for the kernels that draw over a finished canvas. Compiled once for each kind of vector
// unit, by the sources that include it.

#if defined(TAVARO_CANVAS_VECTORS) == defined(HWY_TARGET_TOGGLE)
#ifdef TAVARO_CANVAS_VECTORS
#undef TAVARO_CANVAS_VECTORS
#else
#define TAVARO_CANVAS_VECTORS
#endif

#include <hwy/highway.h>

#include <TavaroRender/Kernels/FloatVectors-inl.h>

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
