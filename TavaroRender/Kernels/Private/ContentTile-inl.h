// What the kernels that draw tiles of the recording share. They work on planes, one for each colour channel. Compiled
// once for each kind of vector unit, by the sources that include it.

#if defined(TAVARO_CONTENT_TILE) == defined(HWY_TARGET_TOGGLE)
#ifdef TAVARO_CONTENT_TILE
#undef TAVARO_CONTENT_TILE
#else
#define TAVARO_CONTENT_TILE
#endif

#include <algorithm>
#include <cstring>

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/ContentPlan.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

namespace hn = hwy::HWY_NAMESPACE;

using Tag16 = hn::ScalableTag<std::int16_t>;
using TagU16 = hn::RebindToUnsigned<Tag16>;
using Vec16 = hn::Vec<Tag16>;

constexpr int channels = 3;
constexpr int tileWidth = ContentPlan::tileWidth;

constexpr int lanes = static_cast<int>(hn::MaxLanes(Tag16()));

/// Columns that share a base: a table look-up across the whole vector where there is one, else across 16 bytes.
#if HWY_TARGET <= HWY_AVX3_DL
constexpr int window = 32;
#else
constexpr int window = 8;
#endif

/// As many texels as a vector has lanes, in pairs of bytes.
struct TexelPairs {
    hn::Vec<TagU16> redGreen, blueAlpha;

    explicit HWY_INLINE TexelPairs(std::uint8_t const* texels) {
        TagU16 const tag;
        auto const* words = reinterpret_cast<std::uint16_t const*>(texels);
        auto const low = hn::LoadU(tag, words);
        auto const high = hn::LoadU(tag, words + lanes);
        redGreen = hn::ConcatEven(tag, high, low);
        blueAlpha = hn::ConcatOdd(tag, high, low);
    }
};

/// The texels `first` … `end` − 1 of a row of the recording in planes of numbers; those past the picture's edges repeat
/// the last one. `split(texels, x)` writes `step` texels from x on to the planes.
template<int step, class Number> struct TexelRow {
    Number* memory;
    int first;
    int end;

    /// From plane to plane: with room for what vectors read and write past the end.
    static std::size_t stride(int first, int end) { return static_cast<std::size_t>((end - first) / 64 * 64 + 192); }

    HWY_INLINE Number* at(int channel, int texel) const {
        return memory + static_cast<std::size_t>(channel) * stride(first, end) + (texel - first);
    }

    template<class Split> HWY_INLINE void read(ImageView image, int y, Split&& split) const {
        auto const from = std::clamp(first, 0, image.width - 1);
        auto const to = std::clamp(end, from + 1, image.width);
        auto const* texels = image.row(y);
        // Pieces of rows are too short for the machine to see the next ones coming.
        auto const* later = image.row(std::min(y + 2, image.height - 1));
        for (int x = from; x < to; x += 16) hwy::Prefetch(later + 4 * static_cast<std::ptrdiff_t>(x));
        auto x = from;
        for (; x + step <= to; x += step) split(texels + 4 * static_cast<std::ptrdiff_t>(x), x);
        if (x < to) {
            alignas(64) std::uint8_t last[4 * step];
            std::memcpy(last, texels + 4 * static_cast<std::ptrdiff_t>(x), 4 * static_cast<std::size_t>(to - x));
            split(last, x);
        }
        for (int c = 0; c < channels; ++c) {
            for (int i = first; i < std::min(from, end); ++i) *at(c, i) = *at(c, from);
            for (int i = std::max(to, first); i < end; ++i) *at(c, i) = *at(c, to - 1);
        }
    }
};

/// Writes two vectors of pixels; `x` is the first, of which only those in the span are written.
HWY_INLINE void storePixels(Vec16 low, Vec16 high, int x, ContentSpan const& span) {
    Tag16 const tag;
    auto const isWhole = x >= span.begin && x + lanes <= span.end;
    alignas(64) std::int16_t part[2 * lanes];
    auto* out = isWhole ? reinterpret_cast<std::int16_t*>(span.out + 4 * static_cast<std::ptrdiff_t>(x)) : part;
    hn::StoreU(low, tag, out);
    hn::StoreU(high, tag, out + lanes);
    if (isWhole) return;
    auto const from = std::max(x, span.begin);
    auto const to = std::min(x + lanes, span.end);
    if (from < to)
        std::memcpy(span.out + 4 * static_cast<std::ptrdiff_t>(from), part + 2 * (from - x),
                    4 * static_cast<std::size_t>(to - from));
}

/// Writes finished columns, opaque.
template<int bits> HWY_INLINE void store(Vec16 const (&color)[channels], int x, ContentSpan const& span) {
    Tag16 const tag;
    auto const unit = hn::Set(tag, 1 << (15 - bits)); // rounds to nearest
    auto const red = hn::MulFixedPoint15(color[0], unit);
    auto const green = hn::ShiftLeft<8>(hn::MulFixedPoint15(color[1], unit));
    auto const redGreen = hn::Or(red, green);
    auto const blueAlpha = hn::Or(hn::MulFixedPoint15(color[2], unit), hn::Set(tag, static_cast<std::int16_t>(0xff00)));
    auto low = hn::InterleaveLower(tag, redGreen, blueAlpha);
    auto high = hn::InterleaveUpper(tag, redGreen, blueAlpha);
#if HWY_TARGET <= HWY_AVX3_DL
    auto const first = _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11);
    auto const second = _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15);
    auto const ordered = Vec16{_mm512_permutex2var_epi64(low.raw, first, high.raw)};
    high = Vec16{_mm512_permutex2var_epi64(low.raw, second, high.raw)};
    low = ordered;
#elif HWY_TARGET <= HWY_AVX2
    auto const ordered = hn::ConcatLowerLower(tag, high, low);
    high = hn::ConcatUpperUpper(tag, high, low);
    low = ordered;
#endif
    storePixels(low, high, x, span);
}

/// The same for columns of one colour.
HWY_INLINE void storeFlat(std::uint32_t color, int x, ContentSpan const& span) {
    auto const pixels = hn::BitCast(Tag16(), hn::Set(hn::Repartition<std::uint32_t, Tag16>(), color));
    storePixels(pixels, pixels, x, span);
}

/// For a row that will be written soon: the machine does not see the next of such short pieces coming, and a large
/// canvas is not in its caches.
HWY_INLINE void prefetch(ContentSpan const& span) {
    constexpr int toWrite = 1;
    for (int x = span.begin; x < span.end; x += 16)
        __builtin_prefetch(span.out + 4 * static_cast<std::ptrdiff_t>(x), toWrite);
}

/// A tile of a plan: its columns in whole vectors.
struct Tile {
    ContentPlan const& plan;
    int index;

    int left() const { return plan.tileBegin(index); }
    int right() const { return std::min(left() + tileWidth, plan.area().right); }
    /// In the plan's tables.
    std::size_t column() const { return static_cast<std::size_t>(index) * tileWidth; }
    ColumnTable::Reach reach(ContentTap const& tap) const { return tap.columns.tiles[static_cast<std::size_t>(index)]; }
    RowPosition const& row(ContentTap const& tap, int y) const {
        return tap.rows[static_cast<std::size_t>(y - plan.area().top)];
    }
    ContentSpan clipped(ContentSpan span) const {
        return {std::max(span.begin, left()), std::min(span.end, right()), span.out};
    }
    /// Calls `draw(i)` for the first column of each vector that the span touches, counted from the tile's left.
    template<class Draw> HWY_INLINE void forVectors(ContentSpan const& span, Draw&& draw) const {
        for (int i = (span.begin - left()) / lanes * lanes; i < span.end - left(); i += lanes) draw(i);
    }
};

HWY_INLINE int clampedRow(ImageView image, int y) { return std::clamp(y, 0, image.height - 1); }

#endif

}
HWY_AFTER_NAMESPACE();

#endif
