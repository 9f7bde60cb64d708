// Draws tiles of an enlarged, sharpened recording. Each source row is resampled to the canvas's columns once, at the
// sample and one texel left and right of it; a canvas row blends those of the rows round it.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/SharpTile.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/ContentTile-inl.h>

#include <TavaroRender/Kernels/Private/ContentTiles.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

void drawSharp(ContentPlan const&, ContentScratch&, int, int, int, FunctionRef<ContentSpan(int)>) {}

#else

namespace {

/// Sums of four channels stay in 16 bits.
constexpr int sharpBits = 5;

HWY_INLINE Vec16 lerp(Vec16 a, Vec16 b, Vec16 fraction) {
    return hn::Add(a, hn::MulFixedPoint15(hn::Sub(b, a), fraction));
}

using WordRow = TexelRow<lanes, std::int16_t>;

HWY_INLINE void readWords(WordRow const& row, ImageView image, int y) {
    row.read(image, y, [&](std::uint8_t const* texels, int x) HWY_ATTR {
        TagU16 const tag;
        TexelPairs const pairs(texels);
        auto const mask = hn::Set(tag, 255);
        auto const store = [&](int c, hn::Vec<TagU16> v) HWY_ATTR {
            hn::StoreU(hn::BitCast(Tag16(), hn::ShiftLeft<sharpBits>(v)), Tag16(), row.at(c, x));
        };
        store(0, hn::And(pairs.redGreen, mask));
        store(1, hn::ShiftRight<8>(pairs.redGreen));
        store(2, hn::And(pairs.blueAlpha, mask));
    });
}

/// What the columns of one vector read, from `column` of the plan on: the four texels round each sample.
class SharpColumns {
public:
    HWY_INLINE SharpColumns(ColumnTable const& table, std::size_t column)
        : base_(table.base.data() + column / window)
        , lastTexel_(base_[lanes / window - 1] + table.index[column + lanes - 1])
        , index_(hn::Load(TagU16(), table.index.data() + column))
        , fraction(hn::BitCast(Tag16(), hn::Load(TagU16(), table.weight.data() + column))) {
#if HWY_TARGET > HWY_AVX3_DL
        // As places of bytes.
        index_ = hn::Add(hn::Mul(index_, hn::Set(TagU16(), 0x0202)), hn::Set(TagU16(), 0x0100));
#endif
    }

    /// Whether what a window reads lies within one vector.
    static bool isNarrow(ColumnTable const& table) { return table.reach + 4 <= lanes; }

    template<bool narrow> HWY_INLINE void pick(WordRow const& row, int channel, Vec16 (&out)[4]) const {
        auto const* p = row.at(channel, base_[0] - 1);
#if HWY_TARGET <= HWY_AVX3_DL
        auto const low = hn::LoadU(Tag16(), p);
        auto const high = narrow ? low : hn::LoadU(Tag16(), p + window);
        for (int k = 0; k < 4; ++k) {
            auto const index = hn::Add(index_, hn::Set(TagU16(), static_cast<std::uint16_t>(k)));
            if constexpr (narrow)
                out[k] = Vec16{_mm512_permutexvar_epi16(index.raw, low.raw)};
            else
                out[k] = Vec16{_mm512_permutex2var_epi16(low.raw, index.raw, high.raw)};
        }
#else
        for (int k = 0; k < 4; ++k) {
#if HWY_TARGET <= HWY_AVX2
            hn::Half<Tag16> const half;
            auto const* q = row.at(channel, base_[1] - 1);
            auto const texels = hn::Combine(Tag16(), hn::LoadU(half, q + k), hn::LoadU(half, p + k));
#else
            auto const texels = hn::LoadU(Tag16(), p + k);
#endif
            out[k] = hn::TableLookupBytes(texels, hn::BitCast(Tag16(), index_));
        }
#endif
    }

    /// Whether all that is read is of one colour, then in `one`.
    HWY_INLINE bool readsOneColor(WordRow const& row, std::int16_t (&one)[channels]) const {
        auto const begin = base_[0] - 1;
        auto const count = lastTexel_ + 3 - begin; // no more than two vectors
        auto differences = hn::Zero(Tag16());
        for (int c = 0; c < channels; ++c) {
            auto const* p = row.at(c, begin);
            one[c] = *p;
            auto const differ = [&](std::int16_t const* texels) HWY_ATTR {
                differences = hn::Or(differences, hn::Xor(hn::LoadU(Tag16(), texels), hn::Set(Tag16(), one[c])));
            };
            differ(p);
            if (count > lanes) differ(p + count - lanes);
        }
        auto const isRead = hn::FirstN(Tag16(), static_cast<std::size_t>(count));
        return hn::AllFalse(Tag16(), hn::And(isRead, hn::Ne(differences, hn::Zero(Tag16()))));
    }

private:
    int const* base_;
    int lastTexel_;
    hn::Vec<TagU16> index_;

public:
    Vec16 fraction;
};

/// A source row at the canvas's columns: `west`, `center` and `east` of each channel.
struct SharpRow {
    enum Kind { west, center, east };
    static constexpr std::size_t size = 3 * channels * tileWidth;

    std::int16_t* memory = nullptr;
    /// Of each vector of columns: the colour of all that it reads, opaque, or 0 where there are several. Most of a
    /// screen is of one colour for long runs, and needs no arithmetic.
    std::uint32_t* flat = nullptr;

    HWY_INLINE std::int16_t* at(int channel, Kind kind) const { return memory + (3 * channel + kind) * tileWidth; }
    HWY_INLINE Vec16 load(int channel, Kind kind, int i) const { return hn::Load(Tag16(), at(channel, kind) + i); }
    /// A vector of columns of one colour.
    HWY_INLINE void fill(int i, std::int16_t const (&one)[channels]) const {
        flat[i / lanes] = 0xff000000u;
        for (int c = 0; c < channels; ++c) {
            for (auto const kind : {west, center, east}) hn::Store(hn::Set(Tag16(), one[c]), Tag16(), at(c, kind) + i);
            flat[i / lanes] |= static_cast<std::uint32_t>(one[c] >> sharpBits) << (8 * c);
        }
    }
};

/// The four rows round a canvas row, kept while canvas rows need them.
class SharpRows {
public:
    SharpRows(Tile const& tile, ContentScratch& scratch)
        : tile_(tile)
        , tap_(tile.plan.tap(0))
        , first_(tile.reach(tap_).first - 1)
        , end_(tile.reach(tap_).end + 2)
        , memory_(scratch.ensure(4 * SharpRow::size + channels * WordRow::stride(first_, end_)))
        , texels_{memory_ + 4 * SharpRow::size, first_, end_} {}

    HWY_INLINE SharpRow row(int y) {
        y = clampedRow(tap_.image, y);
        auto const slot = static_cast<std::size_t>(y) % 4;
        SharpRow const row{memory_ + slot * SharpRow::size, flat_[slot]};
        if (held_[slot] != y) {
            if (SharpColumns::isNarrow(tap_.columns))
                resample<true>(row, y);
            else
                resample<false>(row, y);
            held_[slot] = y;
        }
        return row;
    }

private:
    template<bool narrow> HWY_NOINLINE void resample(SharpRow const& row, int y) {
        readWords(texels_, tap_.image, y);
        auto const width = tile_.right() - tile_.left();
        for (int i = 0; i < width; i += lanes) {
            SharpColumns const columns(tap_.columns, tile_.column() + static_cast<std::size_t>(i));
            std::int16_t one[channels];
            row.flat[i / lanes] = 0;
            if (columns.readsOneColor(texels_, one)) {
                row.fill(i, one);
                continue;
            }
            for (int c = 0; c < channels; ++c) {
                Vec16 texel[4];
                columns.pick<narrow>(texels_, c, texel);
                for (auto const kind : {SharpRow::west, SharpRow::center, SharpRow::east})
                    hn::Store(lerp(texel[kind], texel[kind + 1], columns.fraction), Tag16(), row.at(c, kind) + i);
            }
        }
    }

    Tile const& tile_;
    ContentTap const& tap_;
    int first_;
    int end_;
    std::int16_t* memory_;
    WordRow texels_;
    int held_[4]{-1, -1, -1, -1};
    std::uint32_t flat_[4][tileWidth / lanes];
};

HWY_INLINE Vec16 sharpened(SharpRow const (&rows)[4], int c, int i, Vec16 fraction, Vec16 quarter) {
    auto const middle1 = rows[1].load(c, SharpRow::center, i);
    auto const middle2 = rows[2].load(c, SharpRow::center, i);
    auto const north = lerp(rows[0].load(c, SharpRow::center, i), middle1, fraction);
    auto const center = lerp(middle1, middle2, fraction);
    auto const south = lerp(middle2, rows[3].load(c, SharpRow::center, i), fraction);
    auto const west = lerp(rows[1].load(c, SharpRow::west, i), rows[2].load(c, SharpRow::west, i), fraction);
    auto const east = lerp(rows[1].load(c, SharpRow::east, i), rows[2].load(c, SharpRow::east, i), fraction);
    auto const sum = hn::Add(hn::Add(north, south), hn::Add(west, east));
    auto const detail = hn::Sub(hn::ShiftLeft<2>(center), sum); // four times the difference from the mean
    auto const sharp = hn::SaturatedAdd(center, hn::MulFixedPoint15(detail, quarter));
    auto const lowest = hn::Min(hn::Min(hn::Min(north, south), hn::Min(west, east)), center);
    auto const highest = hn::Max(hn::Max(hn::Max(north, south), hn::Max(west, east)), center);
    return hn::Max(hn::Min(sharp, highest), lowest);
}

HWY_NOINLINE void drawRow(Tile const& tile, SharpRow const (&rows)[4], std::int16_t fraction, ContentSpan const& span) {
    auto const down = hn::Set(Tag16(), fraction);
    auto const quarter = hn::Set(Tag16(), tile.plan.sharpenQuarter());
    tile.forVectors(span, [&](int i) HWY_ATTR {
        auto const flat = [&](int row) { return rows[row].flat[i / lanes]; };
        if (flat(1) != 0 && flat(1) == flat(2) && flat(1) == flat(0) && flat(1) == flat(3))
            return storeFlat(flat(1), tile.left() + i, span);
        Vec16 color[channels];
        for (int c = 0; c < channels; ++c) color[c] = sharpened(rows, c, i, down, quarter);
        store<sharpBits>(color, tile.left() + i, span);
    });
}

}

void drawSharp(ContentPlan const& plan, ContentScratch& scratch, int index, int yBegin, int yEnd,
               FunctionRef<ContentSpan(int)> spanOf) {
    Tile const tile{plan, index};
    SharpRows source(tile, scratch);
    constexpr int rowsAhead = 4;
    for (int y = yBegin; y < yEnd; ++y) {
        if (y + rowsAhead < yEnd) prefetch(tile.clipped(spanOf(y + rowsAhead)));
        auto const span = tile.clipped(spanOf(y));
        if (span.begin >= span.end) continue;
        auto const& position = tile.row(plan.tap(0), y);
        SharpRow const rows[4]{source.row(position.texel - 1), source.row(position.texel),
                               source.row(position.texel + 1), source.row(position.texel + 2)};
        drawRow(tile, rows, position.fraction, span);
    }
}

#endif

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(drawSharp);

void drawSharpTile(ContentPlan const& plan, ContentScratch& scratch, int tile, int yBegin, int yEnd,
                   FunctionRef<ContentSpan(int)> spanOf) {
    HWY_DYNAMIC_DISPATCH(drawSharp)(plan, scratch, tile, yBegin, yEnd, spanOf);
}

}
#endif
