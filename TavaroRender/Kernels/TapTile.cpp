// Draws tiles of a recording that is not sharpened: one or more weighted samples a pixel, as mip levels and motion blur
// ask for. Tap by tap, each source row is resampled to the canvas's columns once; a canvas row adds up two of those.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/TapTile.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/ContentTile-inl.h>

#include <TavaroRender/Kernels/ContentTiles.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

// Without vectors there is nothing to gain over the pixel formulas, which then draw everything.
int windowSize() { return 0; }
void drawTaps(ContentPlan const&, ContentScratch&, int, int, int, FunctionRef<ContentSpan(int)>) {}

#else

namespace {

using TagBytes = hn::Repartition<std::uint8_t, Tag16>;

/// Fraction bits of the sums of all taps, which hold a channel's distance from its middle value.
constexpr int tapBits = 7;
constexpr int middleValue = 128;

/// Texels hold distances from the middle value, so that they may be multiplied by weights of 8 bits, which share 255
/// between a column's two texels: a tap is off by half a step at most, where black meets white.
using ByteRow = TexelRow<2 * lanes, std::uint8_t>;

HWY_NOINLINE void readBytes(ByteRow const& row, ImageView image, int y) {
    row.read(image, y, [&](std::uint8_t const* texels, int x) HWY_ATTR {
        TagBytes const tag;
        TexelPairs const first(texels);
        TexelPairs const second(texels + 4 * lanes);
        auto const store = [&](int c, hn::Vec<TagBytes> v)
                               HWY_ATTR { hn::StoreU(hn::Xor(v, hn::Set(tag, middleValue)), tag, row.at(c, x)); };
        auto const low = hn::BitCast(tag, first.redGreen);
        auto const high = hn::BitCast(tag, second.redGreen);
        store(0, hn::ConcatEven(tag, high, low));
        store(1, hn::ConcatOdd(tag, high, low));
        store(2, hn::ConcatEven(tag, hn::BitCast(tag, second.blueAlpha), hn::BitCast(tag, first.blueAlpha)));
    });
}

/// What the columns of one vector read: two texels each.
class TapColumns {
public:
    /// `column` is the first of the tile's in the plan's tables.
    HWY_INLINE TapColumns(ColumnTable const& table, std::size_t column)
        : base_(table.base.data() + column / window)
        , index_(table.index.data() + column)
        , weight_(table.weight.data() + column) {}

    /// Moves to the columns from `i` of the tile on.
    HWY_INLINE void load(int i) {
        first_ = base_ + i / window;
        pairs_ = hn::BitCast(TagBytes(), hn::Load(TagU16(), index_ + i));
        weights_ = hn::BitCast(TagBytes(), hn::Load(TagU16(), weight_ + i));
    }

    HWY_INLINE Vec16 blend(ByteRow::Planes const& planes, int channel) const {
        auto const* p = planes.texel[channel] + first_[0];
        TagBytes const tag;
#if HWY_TARGET <= HWY_AVX3_DL
        auto const texels = hn::LoadU(tag, p);
        return Vec16{_mm512_maddubs_epi16(weights_.raw, _mm512_permutexvar_epi8(pairs_.raw, texels.raw))};
#elif HWY_TARGET <= HWY_AVX2
        hn::Half<TagBytes> const half;
        auto const texels = hn::Combine(tag, hn::LoadU(half, planes.texel[channel] + first_[1]), hn::LoadU(half, p));
        return Vec16{_mm256_maddubs_epi16(weights_.raw, hn::TableLookupBytes(texels, pairs_).raw)};
#else
        return weighted(hn::TableLookupBytes(hn::LoadU(tag, p), pairs_));
#endif
    }

private:
    HWY_INLINE Vec16 weighted(hn::Vec<TagBytes> texels) const {
        // Where there is no instruction for it: the bytes of each pair by themselves.
        auto const words = hn::BitCast(Tag16(), texels);
        auto const weights = hn::BitCast(TagU16(), weights_);
        auto const left = hn::BitCast(Tag16(), hn::And(weights, hn::Set(TagU16(), 255)));
        auto const right = hn::BitCast(Tag16(), hn::ShiftRight<8>(weights));
        return hn::Add(hn::Mul(hn::ShiftRight<8>(hn::ShiftLeft<8>(words)), left),
                       hn::Mul(hn::ShiftRight<8>(words), right));
    }

    int const* base_;
    std::uint16_t const* index_;
    std::uint16_t const* weight_;
    // Of the columns at hand:
    int const* first_;
    hn::Vec<TagBytes> pairs_;
    hn::Vec<TagBytes> weights_;
};

/// Motion blur samples 16 times, each on two levels.
constexpr int maximumTaps = 32;

/// Canvas rows whose sums are under way at once.
constexpr int blockHeight = 32;

constexpr std::size_t rowSize = channels * tileWidth;

/// Taps that are added to the sums at once.
constexpr int passTaps = 4;

/// Rows of the recording in planes, as far as the taps of a tile reach, kept for the taps that come after: those of a
/// motion blur read nearly the same rows.
class TexelRows {
public:
    explicit TexelRows(Tile const& tile) : tile_(tile), slots_(tile.plan.tapCount() > 2 ? 64 : 1) {
        for (int t = 0; t < tile.plan.tapCount(); ++t) {
            reaches_[t] = reachOf(tile.plan.tap(t));
            room_ = std::max(room_, channels * ByteRow::stride(reaches_[t].first, reaches_[t].end));
        }
    }

    /// Numbers of memory to be given to `use`.
    std::size_t room() const { return slots_ * room_ / sizeof(std::int16_t); }
    void use(std::int16_t* memory) { memory_ = reinterpret_cast<std::uint8_t*>(memory); }

    HWY_INLINE ByteRow row(int tap, int y) {
        auto const slot = static_cast<std::size_t>(y) & (slots_ - 1);
        ByteRow const row{memory_ + slot * room_, reaches_[tap].first, reaches_[tap].end};
        auto const& image = tile_.plan.tap(tap).image;
        if (held_[slot] != image.row(y)) readBytes(row, image, y);
        held_[slot] = image.row(y);
        return row;
    }

private:
    /// What all taps on the same picture read of a row.
    ColumnTable::Reach reachOf(ContentTap const& tap) const {
        auto all = tile_.reach(tap);
        for (int t = 0; t < tile_.plan.tapCount(); ++t) {
            auto const& other = tile_.plan.tap(t);
            if (other.image.pixels != tap.image.pixels) continue;
            auto const reach = tile_.reach(other);
            all = {std::min(all.first, reach.first), std::max(all.end, reach.end)};
        }
        return {all.first, all.end + 1};
    }

    Tile const& tile_;
    std::size_t slots_; // a power of two
    std::size_t room_ = 0;
    std::uint8_t* memory_ = nullptr;
    ColumnTable::Reach reaches_[maximumTaps];
    std::uint8_t const* held_[64]{}; // addresses of rows
};

/// Draws a block of canvas rows of a tile: the taps are added up a few at a time.
class TapBlock {
public:
    TapBlock(Tile const& tile, ContentScratch& scratch) : tile_(tile), texels_(tile) {
        constexpr auto rowRoom = static_cast<std::size_t>(2 * passTaps + blockHeight) * rowSize;
        memory_ = scratch.ensure(rowRoom + texels_.room());
        texels_.use(memory_ + rowRoom);
    }

    void draw(int begin, int end, FunctionRef<ContentSpan(int)> spanOf) {
        for (int t = 0; t < tile_.plan.tapCount(); t += passTaps) {
            std::fill_n(&held_[0][0], 2 * passTaps, -1);
            for (int y = begin; y < end; ++y) {
                auto const span = tile_.clipped(spanOf(y));
                if (span.begin < span.end)
                    addTaps(t, y, memory_ + static_cast<std::size_t>(2 * passTaps + y - begin) * rowSize, span);
            }
        }
    }

private:
    /// Adds the taps from `first` on to a canvas row; the last ones finish it.
    HWY_NOINLINE void addTaps(int first, int y, std::int16_t* sums, ContentSpan const& span) {
        auto const count = std::min(tile_.plan.tapCount() - first, passTaps);
        WeightedRow rows[2 * passTaps];
        for (int k = 0; k < count; ++k) {
            auto const& position = tile_.row(tile_.plan.tap(first + k), y);
            rows[2 * k] = {row(first, k, position.texel), position.upperWeight};
            rows[2 * k + 1] = {row(first, k, position.texel + 1), position.lowerWeight};
        }
        switch (count) {
        case 1: return addRows<2>(rows, first, sums, span);
        case 2: return addRows<4>(rows, first, sums, span);
        case 3: return addRows<6>(rows, first, sums, span);
        default: return addRows<8>(rows, first, sums, span);
        }
    }

    struct WeightedRow {
        std::int16_t const* values = nullptr;
        std::int16_t weight = 0;
    };

    template<int count>
    HWY_INLINE void addRows(WeightedRow const* rows, int first, std::int16_t* sums, ContentSpan const& span) {
        static_assert(count <= 2 * passTaps);
        auto const isLast = first + count / 2 == tile_.plan.tapCount();
        auto const start = hn::Set(Tag16(), middleValue << tapBits);
        Vec16 weights[count];
        for (int k = 0; k < count; ++k) weights[k] = hn::Set(Tag16(), rows[k].weight);
        tile_.forVectors(span, [&](int i) HWY_ATTR {
            Vec16 color[channels];
            for (int c = 0; c < channels; ++c) {
                auto const at = c * tileWidth + i;
                auto sum = first == 0 ? start : hn::Load(Tag16(), sums + at);
                for (int k = 0; k < count; ++k)
                    sum = hn::Add(sum, hn::MulFixedPoint15(hn::Load(Tag16(), rows[k].values + at), weights[k]));
                if (!isLast) hn::Store(sum, Tag16(), sums + at);
                color[c] = sum;
            }
            if (isLast) store<tapBits>(color, tile_.left() + i, span);
        });
    }

    /// A source row at the tile's columns, as tap `k` of those under way sees it. Two neighbouring rows are kept.
    HWY_INLINE std::int16_t const* row(int first, int k, int y) {
        y = clampedRow(tile_.plan.tap(first + k).image, y);
        auto const slot = y % 2;
        auto* out = memory_ + static_cast<std::size_t>(2 * k + slot) * rowSize;
        if (held_[k][slot] != y) resample(first + k, y, out);
        held_[k][slot] = y;
        return out;
    }

    HWY_NOINLINE void resample(int t, int y, std::int16_t* out) {
        auto const texels = texels_.row(t, y);
        ByteRow::Planes const planes(texels);
        TapColumns columns(tile_.plan.tap(t).columns, tile_.column());
        auto const width = tile_.right() - tile_.left();
        for (int i = 0; i < width; i += lanes) {
            columns.load(i);
            for (int c = 0; c < channels; ++c) hn::Store(columns.blend(planes, c), Tag16(), out + c * tileWidth + i);
        }
    }

    Tile const& tile_;
    TexelRows texels_;
    std::int16_t* memory_; // resampled source rows of the taps under way, the sums, and the texels of source rows
    int held_[passTaps][2];
};

}

int windowSize() { return window; }

void drawTaps(ContentPlan const& plan, ContentScratch& scratch, int index, int yBegin, int yEnd,
              FunctionRef<ContentSpan(int)> spanOf) {
    Tile const tile{plan, index};
    TapBlock block(tile, scratch);
    for (int y = yBegin; y < yEnd; y += blockHeight) block.draw(y, std::min(y + blockHeight, yEnd), spanOf);
}

#endif

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(windowSize);
HWY_EXPORT(drawTaps);

int resampleWindow() { return HWY_DYNAMIC_DISPATCH(windowSize)(); }

void drawTapTile(ContentPlan const& plan, ContentScratch& scratch, int tile, int yBegin, int yEnd,
                 FunctionRef<ContentSpan(int)> spanOf) {
    HWY_DYNAMIC_DISPATCH(drawTaps)(plan, scratch, tile, yBegin, yEnd, spanOf);
}

void drawContentTile(ContentPlan const& plan, ContentScratch& scratch, int tile, int yBegin, int yEnd,
                     FunctionRef<ContentSpan(int)> spanOf) {
    (plan.sharpens() ? drawSharpTile : drawTapTile)(plan, scratch, tile, yBegin, yEnd, spanOf);
}

}
#endif
