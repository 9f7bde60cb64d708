// Rows of the recording as the resampler works on them: a plane of 16-bit numbers for each colour channel. Compiled
// once for each kind of vector unit, by the sources that include it.

#if defined(TAVARO_PLANAR_TEXELS) == defined(HWY_TARGET_TOGGLE)
#ifdef TAVARO_PLANAR_TEXELS
#undef TAVARO_PLANAR_TEXELS
#else
#define TAVARO_PLANAR_TEXELS
#endif

#include <algorithm>
#include <cstring>

#include <hwy/highway.h>

#include <TavaroRender/Kernels/ContentPlan.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

namespace hn = hwy::HWY_NAMESPACE;

using Tag16 = hn::ScalableTag<std::int16_t>;
using TagU16 = hn::RebindToUnsigned<Tag16>;
using TagBytes = hn::Repartition<std::uint8_t, Tag16>;
using Vec16 = hn::Vec<Tag16>;

constexpr int channels = 3;
constexpr int tileWidth = ContentPlan::tileWidth;

HWY_INLINE int lanes() { return static_cast<int>(hn::Lanes(Tag16())); }

/// Columns that share a base: a table look-up across the whole vector where there is one, else across 16 bytes.
#if HWY_TARGET <= HWY_AVX3
constexpr int window = 32;
#else
constexpr int window = 8;
#endif

HWY_INLINE std::int16_t fixed15(float v) { return static_cast<std::int16_t>(std::min(v * 32768.0f + 0.5f, 32767.0f)); }

HWY_INLINE Vec16 lerp(Vec16 a, Vec16 b, Vec16 fraction) {
    return hn::Add(a, hn::MulFixedPoint15(hn::Sub(b, a), fraction));
}

/// The texels `first` … `end` − 1 of one row, in planes of channels with `bits` fraction bits.
class TexelRow {
public:
    /// Numbers that `memory` must hold, vectors that hang over included.
    static std::size_t room(int first, int end) { return channels * stride(first, end); }
    TexelRow(std::int16_t* memory, int first, int end)
        : memory_(memory)
        , stride_(stride(first, end))
        , first_(first)
        , end_(end) {}

    /// Texels past the picture's edges repeat the last one.
    template<int bits> HWY_INLINE void read(ImageView image, int y) {
        auto const* texels = image.row(y);
        auto const from = std::clamp(first_, 0, image.width - 1);
        auto const to = std::clamp(end_, from + 1, image.width);
        auto const n = lanes();
        // Pieces of rows are too short for the machine to see the next ones coming.
        auto const* later = image.row(std::min(y + 4, image.height - 1));
        for (int x = from; x < to; x += 16) __builtin_prefetch(later + 4 * static_cast<std::ptrdiff_t>(x));
        auto x = from;
        for (; x + n <= to; x += n) split<bits>(texels + 4 * static_cast<std::ptrdiff_t>(x), x);
        if (x < to) {
            alignas(64) std::uint8_t last[128];
            std::memcpy(last, texels + 4 * static_cast<std::ptrdiff_t>(x), 4 * static_cast<std::size_t>(to - x));
            split<bits>(last, x);
        }
        for (int c = 0; c < channels; ++c) {
            for (int i = first_; i < std::min(from, end_); ++i) *at(c, i) = *at(c, from);
            for (int i = std::max(to, first_); i < end_; ++i) *at(c, i) = *at(c, to - 1);
        }
    }

    HWY_INLINE std::int16_t* at(int channel, int texel) const {
        return memory_ + static_cast<std::size_t>(channel) * stride_ + (texel - first_);
    }

private:
    static std::size_t stride(int first, int end) {
        return static_cast<std::size_t>((end - first + 31) / 32 * 32 + 96);
    }

    template<int bits> HWY_INLINE void split(std::uint8_t const* texels, int x) {
        TagU16 const tag;
        auto const* words = reinterpret_cast<std::uint16_t const*>(texels);
        auto const low = hn::LoadU(tag, words);
        auto const high = hn::LoadU(tag, words + lanes());
        auto const redGreen = hn::ConcatEven(tag, high, low);
        auto const blue = hn::ConcatOdd(tag, high, low);
        auto const mask = hn::Set(tag, 255);
        auto const store = [&](int c, hn::Vec<TagU16> v) HWY_ATTR {
            hn::StoreU(hn::BitCast(Tag16(), hn::ShiftLeft<bits>(v)), Tag16(), at(c, x));
        };
        store(0, hn::And(redGreen, mask));
        store(1, hn::ShiftRight<8>(redGreen));
        store(2, hn::And(blue, mask));
    }

    std::int16_t* memory_;
    std::size_t stride_;
    int first_;
    int end_;
};

/// What the columns of one vector read, from `column` of the plan on.
class ColumnVector {
public:
    HWY_INLINE ColumnVector(ColumnTable const& table, std::size_t column)
        : base_(table.base.data() + column / window)
        , fraction(hn::LoadU(Tag16(), table.fraction.data() + column))
        , index_(hn::LoadU(TagU16(), table.index.data() + column)) {
#if HWY_TARGET > HWY_AVX3
        index_ = hn::Add(hn::Mul(index_, hn::Set(TagU16(), 0x0202)), hn::Set(TagU16(), 0x0100));
#endif
    }

    /// Of each column the texel `shift` after its own, and those one, two … further: `count` vectors.
    template<bool isNarrow, int shift, int count>
    HWY_INLINE void pick(TexelRow const& row, int channel, Vec16 (&out)[count]) const {
#if HWY_TARGET <= HWY_AVX3
        auto const* p = row.at(channel, base_[0] + shift);
        auto const low = hn::LoadU(Tag16(), p);
        auto const high = hn::LoadU(Tag16(), p + window);
        for (int k = 0; k < count; ++k) {
            auto const index = hn::Add(index_, hn::Set(TagU16(), static_cast<std::uint16_t>(k)));
            out[k] = Vec16{_mm512_permutex2var_epi16(low.raw, index.raw, high.raw)};
        }
#else
        std::int16_t const* p[2]{row.at(channel, base_[0] + shift), nullptr};
        if (lanes() > window) p[1] = row.at(channel, base_[1] + shift);
        for (int k = 0; k < count; ++k) {
            auto const low = blocks(p, k);
            if constexpr (isNarrow) {
                out[k] = hn::TableLookupBytes(low, hn::BitCast(Tag16(), index_));
            } else {
                // Only the low bits of an index count; those of texels in the second window have the next one set.
                auto const inWindow = hn::BitCast(Tag16(), hn::And(index_, hn::Set(TagU16(), 0x0f0f)));
                auto const isLow =
                    hn::MaskFromVec(hn::VecFromMask(TagU16(), hn::Lt(index_, hn::Set(TagU16(), 0x1000))));
                out[k] = hn::IfThenElse(hn::RebindMask(Tag16(), isLow), hn::TableLookupBytes(low, inWindow),
                                        hn::TableLookupBytes(blocks(p, k + window), inWindow));
            }
        }
#endif
    }

private:
#if HWY_TARGET > HWY_AVX3
    static HWY_INLINE Vec16 blocks(std::int16_t const* const* p, int k) {
#if HWY_TARGET <= HWY_AVX2
        hn::Half<Tag16> const half;
        return hn::Combine(Tag16(), hn::LoadU(half, p[1] + k), hn::LoadU(half, p[0] + k));
#else
        return hn::LoadU(Tag16(), p[0] + k);
#endif
    }
#endif

    int const* base_;

public:
    Vec16 fraction;

private:
    hn::Vec<TagU16> index_;
};

/// Writes finished columns, opaque; `x` is the first, of which only those in the span are written.
template<int bits> HWY_INLINE void store(Vec16 const (&color)[channels], int x, ContentSpan const& span) {
    Tag16 const tag;
    auto const n = lanes();
    auto const unit = hn::Set(tag, 1 << (15 - bits)); // rounds to nearest
    auto const red = hn::MulFixedPoint15(color[0], unit);
    auto const green = hn::ShiftLeft<8>(hn::MulFixedPoint15(color[1], unit));
    auto const redGreen = hn::Or(red, green);
    auto const blueAlpha = hn::Or(hn::MulFixedPoint15(color[2], unit), hn::Set(tag, static_cast<std::int16_t>(0xff00)));
    auto low = hn::InterleaveLower(tag, redGreen, blueAlpha);
    auto high = hn::InterleaveUpper(tag, redGreen, blueAlpha);
#if HWY_TARGET <= HWY_AVX3
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
    auto const isWhole = x >= span.begin && x + n <= span.end;
    alignas(64) std::int16_t part[128];
    auto* out = isWhole ? reinterpret_cast<std::int16_t*>(span.out + 4 * static_cast<std::ptrdiff_t>(x)) : part;
    hn::StoreU(low, tag, out);
    hn::StoreU(high, tag, out + n);
    if (isWhole) return;
    auto const from = std::max(x, span.begin);
    auto const to = std::min(x + n, span.end);
    if (from < to)
        std::memcpy(span.out + 4 * static_cast<std::ptrdiff_t>(from), part + 2 * (from - x),
                    4 * static_cast<std::size_t>(to - from));
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
    AxisPosition row(ContentTap const& tap, int y) const {
        return tap.rows[static_cast<std::size_t>(y - plan.area().top)];
    }
    ContentSpan clipped(ContentSpan span) const {
        return {std::max(span.begin, left()), std::min(span.end, right()), span.out};
    }
    /// Calls `draw(i)` for the first column of each vector that the span touches, counted from the tile's left.
    template<class Draw> HWY_INLINE void forVectors(ContentSpan const& span, Draw&& draw) const {
        for (int i = (span.begin - left()) / lanes() * lanes(); i < span.end - left(); i += lanes()) draw(i);
    }
};

HWY_INLINE int clampedRow(ImageView image, int y) { return std::clamp(y, 0, image.height - 1); }

#endif

}
HWY_AFTER_NAMESPACE();

#endif
