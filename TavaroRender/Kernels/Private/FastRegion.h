#pragma once

#include <utility>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/Private/AxisPlan.h>
#include <TavaroRender/Kernels/Private/RegionFormula.h>
#include <TavaroRender/Kernels/RegionUniforms.h>

namespace tavaro {

/// The `regionEffect` kernel, fast: whole rows are copied, and the region is worked out by the vector unit; the blur
/// costs the same whatever its radius. `target` may be the source itself: then nothing is copied, and only what changes
/// is touched.
class FastRegion {
public:
    FastRegion(RegionUniforms const& uniforms, ImageView source, MutableImageView target);

    /// The rows that may change: the first, and how many.
    std::pair<int, int> rows() const;
    /// Draws rows `begin` … `end` − 1, which are among them.
    void draw(int begin, int end) const;

private:
    void copyRow(int y) const;
    void drawBlur(int begin, int end) const;

    RegionUniforms uniforms_;
    ImageView source_;
    MutableImageView target_;
    bool isInPlace_ = false;
    int left_ = 0, right_ = 0, top_ = 0, bottom_ = 0; // pixels of the region
    std::array<MaskPoint, 8> maskPoints_;
    Image around_; // what a blur in place reads, as it was before
    int aroundLeft_ = 0, aroundTop_ = 0;
};

}
