#pragma once

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/BlitUniforms.h>
#include <TavaroRender/Kernels/Private/AxisPlan.h>

namespace tavaro {

/// The `blitLayer` kernel, fast: touches only the layer's rectangle, by the vector unit. Where the layer's pixels fall
/// on those of the canvas they are read as they are, and empty ones are passed by.
class FastBlit {
public:
    FastBlit(BlitUniforms const& uniforms, ImageView layer, MutableImageView canvas);

    /// Of the canvas; 0 where nothing is drawn.
    int rowCount() const { return bottom_ - top_; }
    /// Draws rows `begin` … `end` − 1 of those.
    void draw(int begin, int end) const;

private:
    ImageView layer_;
    MutableImageView canvas_;
    BlitUniforms uniforms_;
    AxisPlan columns_;
    int left_ = 0, right_ = 0, top_ = 0, bottom_ = 0; // of the canvas
    int shift_ = 0;                                   // from a column to the layer's texel, where `isDirect_`
    bool isDirect_ = false;
};

}
