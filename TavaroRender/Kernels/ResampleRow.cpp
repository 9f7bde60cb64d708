// Draws spans of the recording: two (sharpened: four) source rows are blended down to one, then columns are picked out
// of that row and blended. Channels are 16-bit fixed point; rounding stays well below half a step of the canvas.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/ResampleRow.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>

#include <TavaroRender/Kernels/ContentPlan.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

// Without vectors there is nothing to gain over the pixel formulas, which then draw everything.
int groupSize() { return 0; }
void drawTile(ContentPlan const&, ContentScratch&, int, int, int, int, std::uint8_t*) {}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Tag16 = hn::ScalableTag<std::int16_t>;
using TagHalf8 = hn::Rebind<std::uint8_t, Tag16>;
using TagIndex = hn::Repartition<std::uint32_t, Tag16>;
using Vec16 = hn::Vec<Tag16>;

HWY_INLINE std::size_t lanes() { return hn::Lanes(Tag16()); }
HWY_INLINE int group() { return static_cast<int>(lanes() / 4); }

/// Channels with so many fraction bits: products of taps stay in 16 bits, and for the sharpened kind sums of four do.
constexpr int plainBits = 7;
constexpr int sharpBits = 5;

template<int bits> HWY_INLINE Vec16 loadTexels(std::uint8_t const* p) {
    return hn::ShiftLeft<bits>(hn::PromoteTo(Tag16(), hn::LoadU(TagHalf8(), p)));
}

/// Texels `first` … `end` − 1 of a blended row, where those past the picture's edge repeat the last one.
/// `blend(x, out)` blends a group from texel x on; `blendOne` a single texel.
template<class Blend, class BlendOne>
HWY_INLINE void blendRow(int first, int end, int width, std::int16_t* out, Blend&& blend, BlendOne&& blendOne) {
    auto const n = group();
    auto const from = std::clamp(first, 0, width - 1);
    auto const to = std::clamp(end, from + 1, width);
    auto const at = [&](int x) { return out + 4 * static_cast<std::ptrdiff_t>(x - first); };
    auto x = from;
    for (; x + n <= to; x += n) blend(x, at(x));
    if (x < to && to - n >= from) {
        blend(to - n, at(to - n));
    } else {
        for (; x < to; ++x) blendOne(x, at(x));
    }
    for (int i = first; i < std::min(from, end); ++i) std::memcpy(at(i), at(from), 8);
    for (int i = std::max(to, first); i < end; ++i) std::memcpy(at(i), at(to - 1), 8);
}

/// Rounds like the vector multiplication.
HWY_INLINE std::int16_t times15(int a, int b) { return static_cast<std::int16_t>((a * b + 0x4000) >> 15); }

HWY_INLINE std::int16_t fixed15(float v) { return static_cast<std::int16_t>(std::min(v * 32768.0f + 0.5f, 32767.0f)); }

HWY_INLINE std::uint8_t const* sourceRow(ImageView image, int y) {
    return image.row(std::clamp(y, 0, image.height - 1));
}

HWY_INLINE void blendTap(ContentTap const& tap, AxisPosition row, int first, int end, std::int16_t* out) {
    auto const* upper = sourceRow(tap.image, row.texel);
    auto const* lower = sourceRow(tap.image, row.texel + 1);
    auto const upperWeight = fixed15((1 - row.fraction) * tap.weight);
    auto const lowerWeight = fixed15(row.fraction * tap.weight);
    // Rows are read in pieces too short for the machine to see them coming.
    auto const* next = sourceRow(tap.image, row.texel + 3);
    auto const a = hn::Set(Tag16(), upperWeight);
    auto const b = hn::Set(Tag16(), lowerWeight);
    blendRow(
        first, end, tap.image.width, out,
        [&](int x, std::int16_t* to) HWY_ATTR {
            hwy::Prefetch(next + 4 * x);
            auto const top = hn::MulFixedPoint15(loadTexels<plainBits>(upper + 4 * x), a);
            auto const bottom = hn::MulFixedPoint15(loadTexels<plainBits>(lower + 4 * x), b);
            hn::StoreU(hn::Add(top, bottom), Tag16(), to);
        },
        [&](int x, std::int16_t* to) {
            for (int c = 0; c < 4; ++c)
                to[c] = static_cast<std::int16_t>(times15(upper[4 * x + c] << plainBits, upperWeight) +
                                                  times15(lower[4 * x + c] << plainBits, lowerWeight));
        });
}

/// The texels that `index` names in the window from `p` on, and those one, two … further: `count` vectors. A wide
/// window is two vectors long, and holds every texel asked for.
template<bool isNarrow, int count>
HWY_INLINE void pick(std::int16_t const* p, hn::Vec<TagIndex> index, Vec16 (&out)[count]) {
    TagIndex const tag;
#if HWY_TARGET <= HWY_AVX3
    // Two loads and a look-up in both beat a load for each vector, as most loads cross cache lines.
    if constexpr (!isNarrow || count > 2) {
        auto const low = hn::BitCast(tag, hn::LoadU(Tag16(), p));
        auto const high = hn::BitCast(tag, hn::LoadU(Tag16(), p + lanes()));
        for (std::uint32_t k = 0; k < count; ++k) {
            auto const at = hn::Add(index, hn::Set(tag, 2 * k));
            out[k] = hn::BitCast(Tag16(), hn::Vec<TagIndex>{_mm512_permutex2var_epi32(low.raw, at.raw, high.raw)});
        }
        return;
    }
#endif
    for (std::size_t k = 0; k < count; ++k) {
        auto const low = hn::BitCast(tag, hn::LoadU(Tag16(), p + 4 * k));
        if constexpr (isNarrow) {
            out[k] = hn::BitCast(Tag16(), hn::TableLookupLanes(low, hn::IndicesFromVec(tag, index)));
        } else {
            auto const high = hn::BitCast(tag, hn::LoadU(Tag16(), p + 4 * k + lanes()));
            auto const size = hn::Set(tag, static_cast<std::uint32_t>(hn::Lanes(tag)));
            auto const inWindow = hn::IndicesFromVec(tag, hn::And(index, hn::Sub(size, hn::Set(tag, 1))));
            auto const isLow = hn::Lt(index, size);
            out[k] = hn::BitCast(Tag16(), hn::IfThenElse(isLow, hn::TableLookupLanes(low, inWindow),
                                                         hn::TableLookupLanes(high, inWindow)));
        }
    }
}

HWY_INLINE Vec16 lerp(Vec16 a, Vec16 b, Vec16 fraction) {
    return hn::Add(a, hn::MulFixedPoint15(hn::Sub(b, a), fraction));
}

/// The finished group, opaque; `x` is its first column, of which only those in the span are written.
template<int bits> HWY_INLINE void store(Vec16 v, int x, int xBegin, int xEnd, std::uint8_t* out) {
    TagHalf8 const bytes;
    hn::Repartition<std::uint32_t, TagHalf8> const pixels;
    auto const rounded = hn::ShiftRight<bits>(hn::Add(v, hn::Set(Tag16(), 1 << (bits - 1))));
    auto const opaque =
        hn::BitCast(bytes, hn::Or(hn::BitCast(pixels, hn::DemoteTo(bytes, rounded)), hn::Set(pixels, 0xff000000u)));
    auto const n = group();
    if (x >= xBegin && x + n <= xEnd) {
        hn::StoreU(opaque, bytes, out + 4 * static_cast<std::ptrdiff_t>(x));
        return;
    }
    std::uint8_t part[64];
    hn::StoreU(opaque, bytes, part);
    auto const from = std::max(x, xBegin);
    auto const to = std::min(x + n, xEnd);
    if (from < to)
        std::memcpy(out + 4 * static_cast<std::ptrdiff_t>(from), part + 4 * (from - x),
                    4 * static_cast<std::size_t>(to - from));
}

struct Span {
    ContentPlan const& plan;
    int tile;
    int row; // within the plan's area
    int xBegin;
    int xEnd;
    std::uint8_t* out;

    int left() const { return plan.area().left; }
    int groupBegin() const { return (xBegin - left()) / group(); }
    int groupEnd() const { return (xEnd - left() + group() - 1) / group(); }
};

HWY_INLINE hn::Vec<TagIndex> indexOf(ColumnTable const& table, int g) {
    return hn::LoadU(TagIndex(), table.index.data() + static_cast<std::size_t>(g) * lanes() / 2);
}

HWY_INLINE Vec16 fractionOf(ColumnTable const& table, int g) {
    return hn::LoadU(Tag16(), table.fraction.data() + static_cast<std::size_t>(g) * lanes());
}

/// A tap's tables and its blended row, by address: what the loop over groups keeps at hand.
struct TapColumns {
    int const* base;
    std::uint32_t const* index;
    std::int16_t const* fraction;
    std::int16_t const* texels; // of texel 0, which may lie before the row's memory

    template<bool isNarrow> HWY_INLINE Vec16 at(int g) const {
        auto const* p = texels + 4 * static_cast<std::ptrdiff_t>(base[g]);
        auto const place = static_cast<std::size_t>(g) * lanes();
        auto const picked = hn::LoadU(TagIndex(), index + place / 2);
        Vec16 texel[2];
        pick<isNarrow>(p, picked, texel);
        return lerp(texel[0], texel[1], hn::LoadU(Tag16(), fraction + place));
    }
};

/// The sum of the taps: one or two of known widths, or `count` of one width.
template<bool firstIsNarrow, bool othersAreNarrow, int fixedCount>
HWY_NOINLINE void drawGroups(Span const& s, TapColumns const* taps, int count) {
    if (fixedCount > 0) count = fixedCount;
    auto const end = s.groupEnd();
    for (int g = s.groupBegin(); g < end; ++g) {
        auto sum = taps[0].at<firstIsNarrow>(g);
        for (int t = 1; t < count; ++t) sum = hn::SaturatedAdd(sum, taps[t].at<othersAreNarrow>(g));
        store<plainBits>(sum, s.left() + g * group(), s.xBegin, s.xEnd, s.out);
    }
}

/// Room for a blended row of one tap, in channels: its texels and the reach of the last window.
HWY_INLINE std::size_t rowRoom(ColumnTable::Reach reach) {
    return (static_cast<std::size_t>(reach.end - reach.first) + 4) * 4 + 3 * lanes();
}

HWY_INLINE std::int16_t* ensureRoom(ContentScratch& scratch, std::size_t channels) {
    if (scratch.capacity < channels) {
        scratch.rows = hwy::AllocateAligned<std::int16_t>(channels);
        if (!scratch.rows) throw std::bad_alloc();
        std::fill_n(scratch.rows.get(), channels, std::int16_t{0});
        scratch.capacity = channels;
    }
    return scratch.rows.get();
}

void drawTaps(Span const& s, ContentScratch& scratch) {
    auto const tileIndex = static_cast<std::size_t>(s.tile);
    auto const count = s.plan.tapCount();
    std::size_t room = 0;
    for (int t = 0; t < count; ++t) room += rowRoom(s.plan.tap(t).columns.tiles[tileIndex]);
    auto* memory = ensureRoom(scratch, room);

    constexpr int maximumTaps = 32; // 16 of motion blur on two levels
    TapColumns taps[maximumTaps];
    bool othersAreNarrow = true;
    for (int t = 0; t < count; ++t) {
        auto const& tap = s.plan.tap(t);
        auto const& columns = tap.columns;
        auto const reach = columns.tiles[tileIndex];
        blendTap(tap, tap.rows[static_cast<std::size_t>(s.row)], reach.first, reach.end + 1, memory);
        taps[t] = {columns.base.data(), columns.index.data(), columns.fraction.data(),
                   memory - 4 * static_cast<std::ptrdiff_t>(reach.first)};
        if (t > 0) othersAreNarrow = othersAreNarrow && columns.isNarrow;
        memory += rowRoom(reach);
    }
    auto const firstIsNarrow = s.plan.tap(0).columns.isNarrow;
    if (count == 1) return (firstIsNarrow ? drawGroups<true, true, 1> : drawGroups<false, false, 1>)(s, taps, count);
    // Shrinking by less than two, only the finer of the two levels needs wide windows.
    if (count == 2 && !firstIsNarrow && othersAreNarrow) return drawGroups<false, true, 2>(s, taps, count);
    if (firstIsNarrow && othersAreNarrow)
        drawGroups<true, true, 0>(s, taps, count);
    else
        drawGroups<false, false, 0>(s, taps, count);
}

/// The rows through the sample, one texel above it and one below it.
struct SharpRows {
    std::int16_t* center;
    std::int16_t* above;
    std::int16_t* below;
};

HWY_INLINE void blendSharp(ContentTap const& tap, AxisPosition row, int first, int end, SharpRows const& out) {
    std::uint8_t const* rows[4];
    for (int i = 0; i < 4; ++i) rows[i] = sourceRow(tap.image, row.texel - 1 + i);
    auto const* next = sourceRow(tap.image, row.texel + 4);
    auto const weight = fixed15(row.fraction);
    auto const fraction = hn::Set(Tag16(), weight);
    auto const place = [&](std::int16_t const* to) { return to - out.center; };
    blendRow(
        first, end, tap.image.width, out.center,
        [&](int x, std::int16_t* to) HWY_ATTR {
            hwy::Prefetch(next + 4 * x);
            auto const r0 = loadTexels<sharpBits>(rows[0] + 4 * x);
            auto const r1 = loadTexels<sharpBits>(rows[1] + 4 * x);
            auto const r2 = loadTexels<sharpBits>(rows[2] + 4 * x);
            auto const r3 = loadTexels<sharpBits>(rows[3] + 4 * x);
            hn::StoreU(lerp(r1, r2, fraction), Tag16(), to);
            hn::StoreU(lerp(r0, r1, fraction), Tag16(), out.above + place(to));
            hn::StoreU(lerp(r2, r3, fraction), Tag16(), out.below + place(to));
        },
        [&](int x, std::int16_t* to) {
            for (int c = 0; c < 4; ++c) {
                int v[4];
                for (int i = 0; i < 4; ++i) v[i] = rows[i][4 * x + c] << sharpBits;
                to[c] = static_cast<std::int16_t>(v[1] + times15(v[2] - v[1], weight));
                out.above[place(to) + c] = static_cast<std::int16_t>(v[0] + times15(v[1] - v[0], weight));
                out.below[place(to) + c] = static_cast<std::int16_t>(v[2] + times15(v[3] - v[2], weight));
            }
        });
    // The texels past an edge were filled for the middle row only.
    for (auto* other : {out.above, out.below}) {
        auto const from = std::clamp(first, 0, tap.image.width - 1);
        auto const to = std::clamp(end, from + 1, tap.image.width);
        for (int i = first; i < std::min(from, end); ++i)
            std::memcpy(other + 4 * (i - first), other + 4 * (from - first), 8);
        for (int i = std::max(to, first); i < end; ++i)
            std::memcpy(other + 4 * (i - first), other + 4 * (to - 1 - first), 8);
    }
}

void drawSharp(Span const& s, ContentScratch& scratch) {
    auto const& tap = s.plan.tap(0);
    auto const& table = tap.columns;
    auto const reach = table.tiles[static_cast<std::size_t>(s.tile)];
    auto const room = rowRoom(reach);
    auto* memory = ensureRoom(scratch, 3 * room);
    SharpRows const rows{memory, memory + room, memory + 2 * room};
    auto const first = reach.first - 1;
    blendSharp(tap, tap.rows[static_cast<std::size_t>(s.row)], first, reach.end + 2, rows);

    auto const amount = hn::Set(Tag16(), s.plan.sharpenQuarter());
    for (int g = s.groupBegin(); g < s.groupEnd(); ++g) {
        auto const at = 4 * static_cast<std::ptrdiff_t>(table.base[static_cast<std::size_t>(g)] - first);
        auto const index = indexOf(table, g);
        auto const f = fractionOf(table, g);
        Vec16 middle[4], above[2], below[2];
        pick<true>(rows.center + at - 4, index, middle);
        pick<true>(rows.above + at, index, above);
        pick<true>(rows.below + at, index, below);
        auto const west = lerp(middle[0], middle[1], f);
        auto const center = lerp(middle[1], middle[2], f);
        auto const east = lerp(middle[2], middle[3], f);
        auto const north = lerp(above[0], above[1], f);
        auto const south = lerp(below[0], below[1], f);
        auto const sum = hn::Add(hn::Add(north, south), hn::Add(west, east));
        auto const detail = hn::Sub(hn::ShiftLeft<2>(center), sum); // four times the difference from the mean
        auto const sharp = hn::SaturatedAdd(center, hn::MulFixedPoint15(detail, amount));
        auto const lowest = hn::Min(hn::Min(hn::Min(north, south), hn::Min(west, east)), center);
        auto const highest = hn::Max(hn::Max(hn::Max(north, south), hn::Max(west, east)), center);
        store<sharpBits>(hn::Max(hn::Min(sharp, highest), lowest), s.left() + g * group(), s.xBegin, s.xEnd, s.out);
    }
}

int groupSize() { return group(); }

void drawTile(ContentPlan const& plan, ContentScratch& scratch, int tile, int y, int xBegin, int xEnd,
              std::uint8_t* out) {
    Span const span{plan, tile, y - plan.area().top, xBegin, xEnd, out};
    if (plan.sharpens())
        drawSharp(span, scratch);
    else
        drawTaps(span, scratch);
}

#endif

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(groupSize);
HWY_EXPORT(drawTile);

int resampleGroup() { return HWY_DYNAMIC_DISPATCH(groupSize)(); }

void drawContentTile(ContentPlan const& plan, ContentScratch& scratch, int tile, int y, int xBegin, int xEnd,
                     std::uint8_t* out) {
    if (xBegin < xEnd) HWY_DYNAMIC_DISPATCH(drawTile)(plan, scratch, tile, y, xBegin, xEnd, out);
}

}
#endif
