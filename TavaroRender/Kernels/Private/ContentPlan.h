#pragma once

#include <array>
#include <cstdint>
#include <new>
#include <vector>

#include <hwy/aligned_allocator.h>

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

class ScreenSampler;
struct CompositeUniforms;

/// Where a sample lies along one axis: the texel before it, and how far it is towards the next one, 0…1.
struct AxisPosition {
    int texel = 0;
    float fraction = 0;
};

/// Starts where vectors do.
template<class T> struct VectorAllocator {
    using value_type = T;
    static constexpr std::align_val_t alignment{64};

    VectorAllocator() = default;
    template<class U> VectorAllocator(VectorAllocator<U> const&) {}
    T* allocate(std::size_t count) { return static_cast<T*>(::operator new(count * sizeof(T), alignment)); }
    void deallocate(T* memory, std::size_t) { ::operator delete(memory, alignment); }
    bool operator==(VectorAllocator const&) const = default;
};

/// Which texels each canvas column reads, ready for the vector unit: `resampleWindow()` neighbouring columns share a
/// base, and pick their texels out of what follows it.
struct ColumnTable {
    std::vector<int> base; // a texel of the source, one a window

    // One a column. A sharpened plan has how far the column's texel lies from the base, and the fraction in 15 bits;
    // another one has that of its two texels, a byte each, and their weights, which share 255.
    std::vector<std::uint16_t, VectorAllocator<std::uint16_t>> index;
    std::vector<std::uint16_t, VectorAllocator<std::uint16_t>> weight;

    struct Reach {
        int first = 0;
        int end = 0;
    };
    std::vector<Reach> tiles; // texels that a tile of columns reads, one a tile
    int reach = 0;            // how far a column's texel lies from its base at most
};

/// The row of texels at or above a sample.
struct RowPosition {
    int texel = 0;
    std::int16_t fraction = 0; // towards the next row, 15 bits
    // The shares of the two rows in the pixel, 15 bits: their weights add up to the tap's, times 128 / 255.
    std::int16_t upperWeight = 0;
    std::int16_t lowerWeight = 0;
};

/// One weighted bilinear sample of each canvas pixel.
struct ContentTap {
    ImageView image;
    std::vector<RowPosition> rows;
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
/// tap is worked out once a column and once a row, and drawing is a blend of two columns, then of two rows.
class ContentPlan {
public:
    /// False where the vector code cannot draw the area (a picture squeezed on one axis and enlarged on the other,
    /// mirrored, or sharpened beyond its number range); the pixel formulas then draw it.
    bool isUsable() const { return isUsable_; }

    void prepare(CompositeUniforms const& uniforms, ScreenSampler const& sampler, CanvasArea area);
    /// The same for what a lens shows: unsmeared, at the lens's own level.
    void prepareLens(CompositeUniforms const& uniforms, ScreenSampler const& sampler, CanvasArea area, Float2 center,
                     float magnification);

    /// Tiles keep the tables of their columns in the first-level cache while rows pass by.
    static constexpr int tileWidth = 384;
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
    bool isUsable_ = false;
    bool sharpens_ = false;
    std::int16_t sharpenQuarter_ = 0;
    int tapCount_ = 0;
    std::vector<ContentTap> taps_;        // kept for their memory, as are those below
    std::vector<float> cropX_, cropY_;    // of each column and row: the point of the crop it shows, unshifted
    std::vector<AxisPosition> positions_; // of the columns of the tap being added
};

/// Working memory of `drawContentTile`, one a thread.
struct ContentScratch {
    hwy::AlignedFreeUniquePtr<std::int16_t[]> memory;
    std::size_t capacity = 0;

    /// At least so many numbers, of any value.
    std::int16_t* ensure(std::size_t count);
};

/// The canvas pixels of a row that are to be drawn; `out` is the row's first pixel.
struct ContentSpan {
    int begin = 0;
    int end = 0;
    std::uint8_t* out = nullptr;
};

/// Columns that read their texels from one place on the vector unit of this machine, one of `resampleWindows`; 0 where
/// it has none.
int resampleWindow();
inline constexpr std::array<std::size_t, 2> resampleWindows{8, 32};

/// Draws the rows `yBegin` … `yEnd` − 1 of a tile, opaque: of each row what of `spanOf(y)` lies in the tile.
void drawContentTile(ContentPlan const& plan, ContentScratch& scratch, int tile, int yBegin, int yEnd,
                     FunctionRef<ContentSpan(int y)> spanOf);

}
