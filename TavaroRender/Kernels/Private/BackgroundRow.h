#pragma once

#include <cstdint>
#include <vector>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/Private/Arithmetic.h>
#include <TavaroRender/Kernels/Private/Background.h>

namespace tavaro {

/// One value a pixel, one array a channel.
struct ColorPlanes {
    std::vector<float> r, g, b;

    void resize(std::size_t count);
};

/// What lies over the background at a run of pixels: the pixel becomes background × `behind` + `added`, and at least
/// `alpha` opaque.
struct VeilPlanes {
    std::vector<float> behind, r, g, b, alpha;

    void resize(std::size_t count);
};

/// The background a run of pixels at a time. Of gradients that the vector code draws (`isGradient`) the dither is left
/// out: it never moves, so a veil can hold it.
class BackgroundRows {
public:
    /// `width` is that of the canvas. The image must stay good as long as rows are drawn.
    BackgroundRows(CompositeUniforms const& uniforms, ImageView image, int width);

    /// Pixels `xBegin` … `xEnd` − 1 of row `y`, to the start of the planes.
    void draw(int y, int xBegin, int xEnd, ColorPlanes& out) const;

    BackgroundMode mode() const { return mode_; }
    /// Whether the vector code draws it: a gradient whose colours are in range.
    bool isGradient() const { return isGradient_; }
    ImageView image() const { return image_; }
    CompositeUniforms const& uniforms() const { return uniforms_; }
    /// The gradient's colours in linear light.
    Float3 linearColor(int index) const { return linear_[index]; }
    /// Aurora: the first two colours mixed, in linear light, a column each.
    ColorPlanes const& columns() const { return columns_; }

private:
    CompositeUniforms uniforms_;
    ImageView image_;
    BackgroundMode mode_;
    bool isGradient_;
    Float3 linear_[4];
    ColorPlanes columns_;
};

/// Lays the veil from `first` on over the start of `background` and writes `count` pixels. An opaque background leaves
/// the alpha of the veil unread.
void paintVeiled(ColorPlanes const& background, VeilPlanes const& veil, std::size_t first, std::size_t count,
                 bool isOpaque, std::uint8_t* out);

}
