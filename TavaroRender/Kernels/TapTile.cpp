// Draws tiles of a recording that is not sharpened: one or more weighted samples a pixel, as mip levels and motion blur
// ask for. Tap by tap, each source row is resampled to the canvas's columns once; a canvas row adds up two of those.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/TapTile.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/PlanarTexels-inl.h>

#include <TavaroRender/Kernels/ContentTiles.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

// Without vectors there is nothing to gain over the pixel formulas, which then draw everything.
int windowSize() { return 0; }
void drawTaps(ContentPlan const&, ContentScratch&, int, int, int, FunctionRef<ContentSpan(int)>) {}

#else

namespace {

/// The sum of all taps stays in 16 bits.
constexpr int tapBits = 7;

/// Canvas rows whose sums are under way at once.
constexpr int blockHeight = 16;

constexpr std::size_t rowSize = channels * tileWidth;

/// Which part of a pixel's sum a tap is.
enum class Turn { only, first, middle, last };

/// A block of canvas rows of a tile, to which the taps are added one after another.
class TapBlock {
public:
    TapBlock(Tile const& tile, ContentScratch& scratch) : tile_(tile) {
        std::size_t room = 0;
        for (int t = 0; t < tile.plan.tapCount(); ++t) {
            auto const reach = tile.reach(tile.plan.tap(t));
            room = std::max(room, TexelRow::room(reach.first, reach.end + 1));
        }
        memory_ = scratch.ensure((2 + blockHeight) * rowSize + room);
    }

    void draw(int begin, int end, FunctionRef<ContentSpan(int)> spanOf) {
        auto const count = tile_.plan.tapCount();
        for (int t = 0; t < count; ++t) {
            auto const& tap = tile_.plan.tap(t);
            held_[0] = held_[1] = -1;
            for (int y = begin; y < end; ++y) {
                auto const span = tile_.clipped(spanOf(y));
                if (span.begin >= span.end) continue;
                auto* sum = memory_ + static_cast<std::size_t>(2 + y - begin) * rowSize;
                if (count == 1)
                    addRow<Turn::only>(tap, y, sum, span);
                else if (t == 0)
                    addRow<Turn::first>(tap, y, sum, span);
                else if (t + 1 < count)
                    addRow<Turn::middle>(tap, y, sum, span);
                else
                    addRow<Turn::last>(tap, y, sum, span);
            }
        }
    }

private:
    template<Turn turn> HWY_NOINLINE void addRow(ContentTap const& tap, int y, std::int16_t* sum, ContentSpan span) {
        auto const position = tile_.row(tap, y);
        auto const* upper = row(tap, position.texel);
        auto const* lower = row(tap, position.texel + 1);
        auto const upperWeight = hn::Set(Tag16(), fixed15((1 - position.fraction) * tap.weight));
        auto const lowerWeight = hn::Set(Tag16(), fixed15(position.fraction * tap.weight));
        tile_.forVectors(span, [&](int i) HWY_ATTR {
            Vec16 color[channels];
            for (int c = 0; c < channels; ++c) {
                auto const at = c * tileWidth + i;
                auto v = hn::Add(hn::MulFixedPoint15(hn::Load(Tag16(), upper + at), upperWeight),
                                 hn::MulFixedPoint15(hn::Load(Tag16(), lower + at), lowerWeight));
                if (turn == Turn::middle || turn == Turn::last) v = hn::SaturatedAdd(v, hn::Load(Tag16(), sum + at));
                if (turn == Turn::first || turn == Turn::middle) hn::Store(v, Tag16(), sum + at);
                color[c] = v;
            }
            if (turn == Turn::only || turn == Turn::last) store<tapBits>(color, tile_.left() + i, span);
        });
    }

    /// A source row at the tile's columns. Two neighbouring rows are kept.
    HWY_INLINE std::int16_t const* row(ContentTap const& tap, int y) {
        y = clampedRow(tap.image, y);
        auto const slot = static_cast<std::size_t>(y) % 2;
        auto* out = memory_ + slot * rowSize;
        if (held_[slot] != y) {
            if (tap.columns.isNarrow)
                resample<true>(tap, y, out);
            else
                resample<false>(tap, y, out);
            held_[slot] = y;
        }
        return out;
    }

    template<bool isNarrow> HWY_NOINLINE void resample(ContentTap const& tap, int y, std::int16_t* out) {
        auto const reach = tile_.reach(tap);
        TexelRow texels(memory_ + (2 + blockHeight) * rowSize, reach.first, reach.end + 1);
        texels.read<tapBits>(tap.image, y);
        for (int i = 0; i < tile_.right() - tile_.left(); i += lanes()) {
            ColumnVector const columns(tap.columns, tile_.column() + static_cast<std::size_t>(i));
            for (int c = 0; c < channels; ++c) {
                Vec16 texel[2];
                columns.pick<isNarrow, 0>(texels, c, texel);
                hn::Store(lerp(texel[0], texel[1], columns.fraction), Tag16(), out + c * tileWidth + i);
            }
        }
    }

    Tile const& tile_;
    std::int16_t* memory_; // two resampled source rows, the sums, and the texels of a source row
    int held_[2]{-1, -1};
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
