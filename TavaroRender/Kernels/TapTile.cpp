// Draws tiles of a recording that is not sharpened: one or more weighted samples a pixel, as mip levels and motion blur
// ask for. All samples of a vector of pixels are added up at once, out of rows of bytes that stay in the cache.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/TapTile.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <span>

#include <TavaroRender/Kernels/Private/ContentTile-inl.h>

#include <TavaroRender/Kernels/Private/ContentTiles.h>

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

/// A row of texels as one tap of a canvas row reads it.
struct WeightedRow {
    std::uint8_t const* texels = nullptr; // of the first plane: texel 0, which may lie before the row's memory
    std::int16_t weight = 0;
};

/// What the columns of one vector read in a tap: two texels each.
struct TapColumns {
    int const* base;
    std::uint16_t const* pairs;
    std::uint16_t const* weights;
    std::size_t plane; // from one plane of the tap's rows to the next

    TapColumns() = default;
    TapColumns(ColumnTable const& table, std::size_t column, std::size_t plane)
        : base(table.base.data() + column / window)
        , pairs(table.index.data() + column)
        , weights(table.weight.data() + column)
        , plane(plane) {}

    /// Adds a tap's share to the colour. `narrow` windows lie within half a vector.
    template<bool narrow>
    HWY_INLINE void add(WeightedRow const& upper, WeightedRow const& lower, Vec16 (&color)[channels]) const {
        auto const upperWeight = hn::Set(Tag16(), upper.weight);
        auto const lowerWeight = hn::Set(Tag16(), lower.weight);
        for (std::size_t c = 0; c < channels; ++c) {
            auto const above = hn::MulFixedPoint15(blend<narrow>(upper.texels + c * plane), upperWeight);
            auto const below = hn::MulFixedPoint15(blend<narrow>(lower.texels + c * plane), lowerWeight);
            color[c] = hn::Add(color[c], hn::Add(above, below));
        }
    }

private:
    HWY_INLINE static hn::Vec<TagBytes> load(std::uint16_t const* table) {
        return hn::BitCast(TagBytes(), hn::Load(TagU16(), table));
    }

    template<bool narrow> HWY_INLINE Vec16 blend(std::uint8_t const* plane) const {
        TagBytes const tag;
#if HWY_TARGET <= HWY_AVX3_DL
        __m512i texels;
        if constexpr (narrow)
            texels = _mm512_castsi256_si512(hn::LoadU(hn::Half<TagBytes>(), plane + base[0]).raw);
        else
            texels = hn::LoadU(tag, plane + base[0]).raw;
        return Vec16{_mm512_maddubs_epi16(load(weights).raw, _mm512_permutexvar_epi8(load(pairs).raw, texels))};
#elif HWY_TARGET <= HWY_AVX2
        hn::Half<TagBytes> const half;
        auto const texels = hn::Combine(tag, hn::LoadU(half, plane + base[1]), hn::LoadU(half, plane + base[0]));
        return Vec16{_mm256_maddubs_epi16(load(weights).raw, hn::TableLookupBytes(texels, load(pairs)).raw)};
#else
        return weighted(hn::TableLookupBytes(hn::LoadU(tag, plane + base[0]), load(pairs)));
#endif
    }

    HWY_INLINE Vec16 weighted(hn::Vec<TagBytes> texels) const {
        // Where there is no instruction for it: the bytes of each pair by themselves.
        auto const words = hn::BitCast(Tag16(), texels);
        auto const both = hn::Load(TagU16(), weights);
        auto const left = hn::BitCast(Tag16(), hn::And(both, hn::Set(TagU16(), 255)));
        auto const right = hn::BitCast(Tag16(), hn::ShiftRight<8>(both));
        return hn::Add(hn::Mul(hn::ShiftRight<8>(hn::ShiftLeft<8>(words)), left),
                       hn::Mul(hn::ShiftRight<8>(words), right));
    }
};

/// The rows of one picture (a level of the recording) that the taps of a tile read, kept while canvas rows need them.
struct PictureRows {
    ImageView image;
    ColumnTable::Reach reach; // of all taps
    int slots = 1;            // rows that are held at once, a power of two
    int* held = nullptr;      // which row each slot holds
    std::uint8_t* memory = nullptr;

    std::size_t plane() const { return ByteRow::stride(reach.first, reach.end); }
    std::size_t room() const { return channels * plane(); }
    HWY_INLINE std::uint8_t const* ensureRow(int y) {
        auto const slot = y & (slots - 1);
        ByteRow const row{memory + static_cast<std::size_t>(slot) * room(), reach.first, reach.end};
        if (held[slot] != y) readBytes(row, image, y);
        held[slot] = y;
        return row.at(0, reach.first) - reach.first;
    }
};

/// Motion blur samples 16 times, each on two levels.
constexpr int maximumTaps = 32;
constexpr int maximumPictures = 2;

/// Canvas rows that are drawn together, vector by vector: the more taps, the more their tables of columns gain from
/// staying in the first-level cache; few taps gain more from pixels that lie together.
constexpr int maximumRows = 16;
constexpr int rowsOfFewTaps = 4;

class TapTile {
public:
    TapTile(Tile const& tile, ContentScratch& scratch, int yBegin, int yEnd)
        : tile_(tile)
        , taps_(tile.plan.tapCount())
        , rowsAtOnce_(taps_ > 4 ? maximumRows : rowsOfFewTaps) {
        for (int t = 0; t < taps_; ++t) addTap(t);
        for (int y = yBegin; y < yEnd; y += rowsAtOnce_) countSlots(y, std::min(y + rowsAtOnce_, yEnd) - 1);
        std::size_t bytes = 0;
        for (auto const& p : pictures()) bytes += (p.room() + sizeof(int)) * static_cast<std::size_t>(p.slots);
        auto* memory = reinterpret_cast<std::uint8_t*>(scratch.ensure(bytes / sizeof(std::int16_t)));
        for (auto& p : pictures()) {
            p.memory = memory;
            memory += p.room() * static_cast<std::size_t>(p.slots);
        }
        auto* held = reinterpret_cast<int*>(memory);
        for (auto& p : pictures()) {
            p.held = held;
            held = std::fill_n(held, p.slots, -1);
        }
    }

    void draw(int yBegin, int yEnd, FunctionRef<ContentSpan(int)> spanOf) {
        for (int y = yBegin; y < yEnd; y += rowsAtOnce_) {
            auto const count = std::min(rowsAtOnce_, yEnd - y);
            for (int i = 0; i < count; ++i) {
                spans_[i] = tile_.clipped(spanOf(y + i));
                if (spans_[i].begin >= spans_[i].end) spans_[i] = {};
                if (spans_[i].end > 0) findRows(y + i, rows_[i]);
            }
            auto const width = tile_.right() - tile_.left();
            for (int x = 0; x < width; x += lanes) (isNarrow_ ? drawVector<true> : drawVector<false>)(*this, x, count);
        }
    }

private:
    std::span<PictureRows> pictures() { return {pictures_, static_cast<std::size_t>(pictureCount_)}; }

    void addTap(int t) {
        auto const& tap = tile_.plan.tap(t);
        auto const reach = tile_.reach(tap);
        int p = 0;
        while (p < pictureCount_ && pictures_[p].image.pixels != tap.image.pixels) ++p;
        if (p == pictureCount_) pictures_[pictureCount_++] = {tap.image, {reach.first, reach.end + 1}};
        auto& all = pictures_[p].reach;
        all = {std::min(all.first, reach.first), std::max(all.end, reach.end + 1)};
        pictureOf_[t] = p;
        isNarrow_ = isNarrow_ && tap.columns.reach + 2 <= window;
    }

    /// Makes room for all that the canvas rows `first` … `last` read.
    void countSlots(int first, int last) {
        int low[maximumPictures]{}, high[maximumPictures]{-1, -1};
        for (int t = 0; t < taps_; ++t) {
            auto const p = pictureOf_[t];
            for (auto const y : {first, last}) {
                auto const texel = tile_.row(tile_.plan.tap(t), y).texel;
                auto const upper = clampedRow(pictures_[p].image, texel);
                auto const lower = clampedRow(pictures_[p].image, texel + 1);
                low[p] = high[p] < 0 ? upper : std::min(low[p], upper);
                high[p] = std::max(high[p], lower);
            }
        }
        for (int p = 0; p < pictureCount_; ++p)
            while (pictures_[p].slots <= high[p] - low[p]) pictures_[p].slots *= 2;
    }

    void findRows(int y, WeightedRow* rows) {
        for (int t = 0; t < taps_; ++t) {
            auto& picture = pictures_[pictureOf_[t]];
            auto const& position = tile_.row(tile_.plan.tap(t), y);
            *rows++ = {picture.ensureRow(clampedRow(picture.image, position.texel)), position.upperWeight};
            *rows++ = {picture.ensureRow(clampedRow(picture.image, position.texel + 1)), position.lowerWeight};
        }
    }

    /// The columns from `x` of the tile on, of `count` canvas rows.
    template<bool narrow> static HWY_NOINLINE void drawVector(TapTile const& self, int x, int count) {
        auto const column = self.tile_.column() + static_cast<std::size_t>(x);
        auto const left = self.tile_.left() + x;
        TapColumns taps[maximumTaps];
        for (int t = 0; t < self.taps_; ++t)
            taps[t] = {self.tile_.plan.tap(t).columns, column, self.pictures_[self.pictureOf_[t]].plane()};
        for (int i = 0; i < count; ++i) {
            auto const& span = self.spans_[i];
            if (left + lanes <= span.begin || left >= span.end) continue;
            auto const start = hn::Set(Tag16(), middleValue << tapBits);
            Vec16 color[channels]{start, start, start};
            auto const* rows = self.rows_[i];
            for (int t = 0; t < self.taps_; ++t) taps[t].template add<narrow>(rows[2 * t], rows[2 * t + 1], color);
            store<tapBits>(color, left, span);
        }
    }

    Tile const& tile_;
    int taps_;
    int rowsAtOnce_;
    bool isNarrow_ = true;
    int pictureCount_ = 0;
    PictureRows pictures_[maximumPictures];
    int pictureOf_[maximumTaps];
    ContentSpan spans_[maximumRows];
    WeightedRow rows_[maximumRows][2 * maximumTaps];
};

}

int windowSize() { return window; }

void drawTaps(ContentPlan const& plan, ContentScratch& scratch, int index, int yBegin, int yEnd,
              FunctionRef<ContentSpan(int)> spanOf) {
    Tile const tile{plan, index};
    yBegin = std::max(yBegin, plan.area().top);
    yEnd = std::min(yEnd, plan.area().bottom);
    TapTile(tile, scratch, yBegin, yEnd).draw(yBegin, yEnd, spanOf);
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
