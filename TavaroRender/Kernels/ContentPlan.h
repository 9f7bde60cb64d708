#pragma once

#include <cstdint>
#include <vector>

#include <hwy/aligned_allocator.h>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/Arithmetic.h>

namespace tavaro {

class ScreenSampler;
struct CompositeUniforms;

/// Where a sample lies along one axis: the texel before it, and how far it is towards the next one, 0…1.
struct AxisPosition {
    int texel = 0;
    float fraction = 0;
};

/// Which texels each canvas column reads, ready for the vector unit: columns stand in groups of `resampleGroup()`; a
/// group reads a window of a blended source row from `base` on, and picks its texels out of it by `index`.
struct ColumnTable {
    std::vector<int> base;              // a texel of the source, one a group
    std::vector<std::uint32_t> index;   // two a column: the halves of an 8-byte texel of 16-bit channels
    std::vector<std::int16_t> fraction; // four a column, 15 bits
    struct Reach {
        int first = 0;
        int end = 0;
    };
    std::vector<Reach> tiles; // texels that a tile of columns reads, one a tile
    bool isNarrow = true;     // no group's window is wider than the group
};

/// One weighted bilinear sample of each canvas pixel.
struct ContentTap {
    ImageView image;
    float weight = 1;
    std::vector<AxisPosition> rows;
    ColumnTable columns;
};

/// Canvas columns and rows, ends excluded.
struct CanvasArea {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    bool isEmpty() const { return left >= right || top >= bottom; }
};

/// A map of canvas points that keeps the axes apart: towards or away from a centre. The plain canvas has scale 1.
struct LensMapping {
    Float2 center;
    float magnification = 1;
    bool isIdentity = true;
};

/// How the recording is drawn into an area of the canvas. Zoom, crop and lens act on each axis alone, so that every
/// tap is worked out once a column and once a row, and drawing is a blend of two rows, then of two columns.
class ContentPlan {
public:
    /// False where the vector code cannot draw the area (a picture squeezed on one axis and enlarged on the other, or
    /// sharpened beyond its number range); the pixel formulas then draw it.
    bool isUsable() const { return isUsable_; }

    void prepare(CompositeUniforms const& uniforms, ScreenSampler const& sampler, CanvasArea area);
    /// The same for what a lens shows: unsmeared, at the lens's own level.
    void prepareLens(CompositeUniforms const& uniforms, ScreenSampler const& sampler, CanvasArea area, Float2 center,
                     float magnification);

    /// Tiles keep the tables of their columns in the first-level cache while rows pass by.
    static constexpr int tileWidth = 256;
    int tileCount() const { return (area_.right - area_.left + tileWidth - 1) / tileWidth; }
    int tileBegin(int tile) const { return area_.left + tile * tileWidth; }

    CanvasArea area() const { return area_; }
    bool sharpens() const { return sharpens_; }
    /// A quarter of the sharpening amount, 15 bits.
    std::int16_t sharpenQuarter() const { return sharpenQuarter_; }
    int tapCount() const { return tapCount_; }
    ContentTap const& tap(int index) const { return taps_[static_cast<std::size_t>(index)]; }

private:
    void start(ScreenSampler const& sampler, CanvasArea area, LensMapping mapping, float sharpen);
    void addTap(ScreenSampler const& sampler, Float2 shift, float level, float weight);
    void addLevelTap(ScreenSampler const& sampler, Float2 shift, int level, float weight);

    CanvasArea area_;
    LensMapping mapping_;
    bool isUsable_ = false;
    bool sharpens_ = false;
    std::int16_t sharpenQuarter_ = 0;
    int tapCount_ = 0;
    std::vector<ContentTap> taps_; // kept for their memory
};

/// Working memory of `drawContentTile`, one a thread.
struct ContentScratch {
    hwy::AlignedFreeUniquePtr<std::int16_t[]> rows;
    std::size_t capacity = 0;
};

/// Columns that the vector unit of this machine draws at once; 0 where it has none.
int resampleGroup();

/// Draws the canvas pixels `xBegin` … `xEnd` − 1 of row `y`, all in one tile, opaque, to `out` (the row's first pixel).
void drawContentTile(ContentPlan const& plan, ContentScratch& scratch, int tile, int y, int xBegin, int xEnd,
                     std::uint8_t* out);

}
