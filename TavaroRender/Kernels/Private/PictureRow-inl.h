// The camera's picture along rows of the canvas. Compiled once for each kind of vector unit, by the sources that
// include it.

#if defined(TAVARO_PICTURE_ROW) == defined(HWY_TARGET_TOGGLE)
#ifdef TAVARO_PICTURE_ROW
#undef TAVARO_PICTURE_ROW
#else
#define TAVARO_PICTURE_ROW
#endif

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/CameraRow.h>
#include <TavaroRender/Kernels/Private/CanvasVectors-inl.h>
#include <TavaroRender/Kernels/Private/GradeVectors-inl.h>

#include <algorithm>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

constexpr int fractionBits = 7; // of a blended channel, which fills 15 bits

/// Mixes `count` texels of two rows, channel by channel, into numbers with a fraction.
HWY_INLINE void blendRows(std::uint8_t const* upper, std::uint8_t const* lower, float down, std::int16_t* out,
                          int count, std::uint8_t const* nextUpper, std::uint8_t const* nextLower) {
    hn::ScalableTag<std::int16_t> const words;
    hn::Rebind<std::uint8_t, decltype(words)> const bytes;
    auto const n = hn::Lanes(words);
    auto const total = 4 * static_cast<std::size_t>(count);
    auto const share = static_cast<std::int16_t>(std::min(down * 32768.0f + 0.5f, 32767.0f));
    auto const weight = hn::Set(words, share);
    auto const blend = [&](std::size_t i) HWY_ATTR {
        auto const top = hn::PromoteTo(words, hn::LoadU(bytes, upper + i));
        auto const bottom = hn::PromoteTo(words, hn::LoadU(bytes, lower + i));
        auto const change = hn::MulFixedPoint15(hn::ShiftLeft<fractionBits>(hn::Sub(bottom, top)), weight);
        hn::StoreU(hn::Add(hn::ShiftLeft<fractionBits>(top), change), words, out + i);
    };
    std::size_t i = 0;
    for (; i + 2 * n <= total; i += 2 * n) {
        // Pieces of rows are too short for the machine to see the next ones coming.
        hwy::Prefetch(nextUpper + i);
        hwy::Prefetch(nextLower + i);
        blend(i);
        blend(i + n);
    }
    if (i + n <= total) {
        blend(i);
        i += n;
    }
    for (; i < total; ++i) {
        auto const change = ((lower[i] - upper[i]) * (1 << fractionBits) * share + (1 << 14)) >> 15;
        out[i] = static_cast<std::int16_t>(upper[i] * (1 << fractionBits) + change);
    }
}

/// One row of samples: the rows of the picture are mixed first, then each column takes its two texels from the result.
class SampledRow {
public:
    /// Columns `begin` … `begin` + `count` − 1 of the plan. The canvas's next row lies `rowsPerRow` further down.
    HWY_INLINE void take(ImageView image, AxisPlan const& columns, AxisPlace row, int rowsPerRow, std::size_t begin,
                         std::size_t count, CameraScratch::Samples& memory, std::vector<std::int16_t>& mixedRows) {
        // Columns run one way, left to right or mirrored.
        auto const low = std::min(columns.first[begin], columns.first[begin + count - 1]);
        auto const high = std::max(columns.first[begin], columns.first[begin + count - 1]);
        auto const wide = std::min(high + 2, image.width) - low;
        auto const need = 4 * (static_cast<std::size_t>(image.width) + 2);
        if (mixedRows.size() < need) mixedRows.resize(need);
        auto const offset = 4 * static_cast<std::ptrdiff_t>(low);
        auto const later = [&](int y) { return image.row(std::clamp(y + rowsPerRow, 0, image.height - 1)) + offset; };
        blendRows(image.row(row.first) + offset, image.row(std::min(row.first + 1, image.height - 1)) + offset,
                  row.between, mixedRows.data() + offset, wide, later(row.first), later(row.first + 1));
        constexpr std::size_t longestVector = 16;
        if (memory.size() < count + longestVector) memory.resize(count + longestVector);
        auto* const pairs = memory.data();
        auto const* const places = columns.first.data() + begin;
        auto const* const texels = mixedRows.data();
        for (std::size_t i = 0; i < count; i += 4) // both have room for some more
            for (std::size_t j = i; j < i + 4; ++j)
                std::memcpy(pairs + j, texels + 4 * static_cast<std::ptrdiff_t>(places[j]), sizeof pairs[j]);
        pairs_ = pairs;
        between_ = columns.between.data() + begin;
    }

    /// From the `i`th of the columns on, 0…1.
    HWY_INLINE Vec3 operator()(std::size_t i) const {
        TagInt const whole;
        VecInt redGreen, blue, nextRedGreen, nextBlue;
        hn::LoadInterleaved4(whole, pairs_[i].data(), redGreen, blue, nextRedGreen, nextBlue);
        auto const between = hn::LoadU(Tag(), between_ + i);
        auto const first = [](VecInt v)
                               HWY_ATTR { return hn::ConvertTo(Tag(), hn::And(v, hn::Set(TagInt(), 0xFFFF))); };
        auto const second = [](VecInt v) HWY_ATTR { return hn::ConvertTo(Tag(), hn::ShiftRight<16>(v)); };
        constexpr float unit = 1.0f / (255 << fractionBits);
        return scaled(Vec3{mixed(first(redGreen), first(nextRedGreen), between),
                           mixed(second(redGreen), second(nextRedGreen), between),
                           mixed(first(blue), first(nextBlue), between)},
                      set(unit));
    }

private:
    CameraScratch::Pair const* pairs_ = nullptr;
    float const* between_ = nullptr;
};

HWY_INLINE Vec3 lower(Vec3 const& a, Vec3 const& b) {
    return {hn::Min(a.x, b.x), hn::Min(a.y, b.y), hn::Min(a.z, b.z)};
}
HWY_INLINE Vec3 higher(Vec3 const& a, Vec3 const& b) {
    return {hn::Max(a.x, b.x), hn::Max(a.y, b.y), hn::Max(a.z, b.z)};
}

/// The camera's picture along one row of the canvas, sharpened and graded.
class PictureRow {
public:
    /// The columns of `span`, at `offsetY` from the box's centre. An empty span takes nothing.
    HWY_INLINE PictureRow(CameraPlan const& plan, CameraScratch& scratch, float offsetY, PixelSpan span)
        : plan_(plan)
        , grade_(plan)
        , begin_(span.begin)
        , localY_(plan.mapping().local({0, offsetY}).y - 0.5f) {
        if (span.isEmpty()) return;
        auto const first = static_cast<std::size_t>(span.begin - plan.columns().begin);
        auto const count = static_cast<std::size_t>(span.end - span.begin);
        auto const take = [&](SampledRow& samples, AxisPlan const& columns, float down, std::size_t index) HWY_ATTR {
            auto const row = plan.cameraRow(offsetY, down);
            samples.take(plan.camera(), columns, row, plan.cameraRow(offsetY + 1, down).first - row.first, first, count,
                         scratch.samples[index], scratch.blended);
        };
        take(center_, plan.center(), 0, 0);
        if (!plan.isSharpened()) return;
        take(north_, plan.center(), -plan.reach(), 1);
        take(south_, plan.center(), plan.reach(), 2);
        take(west_, plan.west(), 0, 3);
        take(east_, plan.east(), 0, 4);
    }

    /// Do its colours stay within 0…1? Sharpening goes a little past both ends.
    HWY_INLINE bool isWithin() const {
        return !plan_.isSharpened() || (plan_.isGraded() && plan_.uniforms().lookStrength == 1);
    }

    /// From column `x` of the canvas on, 0…1; `dx` is from the box's centre.
    HWY_INLINE Vec3 operator()(int x, Vec dx) const {
        auto const i = static_cast<std::size_t>(x - begin_);
        auto color = center_(i);
        if (plan_.isSharpened()) color = sharpened(color, i);
        if (plan_.isGraded()) {
            auto const localX = mul(dx, set(0.5f / plan_.mapping().halfSize.x));
            color = grade_(color, localX, set(localY_));
        }
        return color;
    }

private:
    HWY_INLINE Vec3 sharpened(Vec3 const& center, std::size_t i) const {
        auto const north = north_(i);
        auto const south = south_(i);
        auto const west = west_(i);
        auto const east = east_(i);
        auto const lowest = lower(lower(lower(north, south), lower(east, west)), center);
        auto const highest = higher(higher(higher(north, south), higher(east, west)), center);
        auto const amount = set(plan_.uniforms().sharpen * 2.4f);
        auto const channel = [&](Vec c, Vec n, Vec s, Vec w, Vec e, Vec low, Vec high) HWY_ATTR {
            auto const mean = mul(add(add(n, s), add(e, w)), set(0.25f));
            auto const slack = mul(sub(high, low), set(0.08f));
            auto const crisp = add(c, mul(sub(c, mean), amount));
            return hn::Max(hn::Min(crisp, add(high, slack)), sub(low, slack));
        };
        return {channel(center.x, north.x, south.x, west.x, east.x, lowest.x, highest.x),
                channel(center.y, north.y, south.y, west.y, east.y, lowest.y, highest.y),
                channel(center.z, north.z, south.z, west.z, east.z, lowest.z, highest.z)};
    }

    CameraPlan const& plan_;
    GradeVectors grade_;
    int begin_;
    float localY_;
    SampledRow center_, north_, south_, west_, east_;
};

}
HWY_AFTER_NAMESPACE();

#endif
