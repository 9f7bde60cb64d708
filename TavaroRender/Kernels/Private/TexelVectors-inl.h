// Texels that lie anywhere along a row, read into vectors. Compiled once for each kind of vector unit, by the sources
// that include it.

#if defined(TAVARO_TEXEL_VECTORS) == defined(HWY_TARGET_TOGGLE)
#ifdef TAVARO_TEXEL_VECTORS
#undef TAVARO_TEXEL_VECTORS
#else
#define TAVARO_TEXEL_VECTORS
#endif

#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/AxisPlan.h>
#include <TavaroRender/Kernels/Private/FloatVectors-inl.h>

#include <cstdint>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

/// The two texels of a row that each `place` (in texels, from `texels` on) names, and those to their right.
HWY_INLINE void readPairs(std::int32_t const* texels, std::int32_t const* place, bool hasRight, VecInt& left,
                          VecInt& right) {
    TagInt const whole;
    auto const n = hn::Lanes(whole);
    // Plain loads: gathers cost several times as much on many machines.
    alignas(64) std::int32_t pairs[32];
    if (hasRight)
        for (std::size_t i = 0; i < n; ++i) std::memcpy(pairs + 2 * i, texels + place[i], 8);
    else
        for (std::size_t i = 0; i < n; ++i) pairs[2 * i] = pairs[2 * i + 1] = texels[place[i]];
    hn::LoadInterleaved2(whole, pairs, left, right);
}

/// The cells that the columns from `i` on lie in, along one row of the canvas.
struct CellVectors {
    VecInt topLeft, topRight, bottomLeft, bottomRight;
    Vec across, down;

    HWY_INLINE CellVectors(ImageView image, AxisPlan const& columns, std::size_t i, AxisPlace row) {
        auto const* const places = columns.first.data() + i;
        auto const hasRight = image.width > 1;
        auto const texels = [&](int y) { return reinterpret_cast<std::int32_t const*>(image.row(y)); };
        readPairs(texels(row.first), places, hasRight, topLeft, topRight);
        readPairs(texels(std::min(row.first + 1, image.height - 1)), places, hasRight, bottomLeft, bottomRight);
        across = hn::LoadU(Tag(), columns.between.data() + i);
        down = set(row.between);
    }

    /// Channel 0…3, mixed bilinearly, 0…255.
    template<int c> HWY_INLINE Vec mixedChannel() const {
        return mixed(mixed(channel<c>(topLeft), channel<c>(topRight), across),
                     mixed(channel<c>(bottomLeft), channel<c>(bottomRight), across), down);
    }
    HWY_INLINE Vec3 mixedColor() const { return {mixedChannel<0>(), mixedChannel<1>(), mixedChannel<2>()}; }
};

}
HWY_AFTER_NAMESPACE();

#endif
