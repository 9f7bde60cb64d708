#pragma once

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/Private/Sampling.h>
#include <TavaroRender/Kernels/Private/ScreenLayer.h>

namespace tavaro {

class ScreenTexture;

/// The `composite` kernel for single pixels: everything that is worked out once a frame, and the formula in its steps.
class CompositePixel {
public:
    CompositePixel(CompositeUniforms const& uniforms, ScreenTexture const& screen, ImageView background);

    CompositeUniforms const& uniforms() const { return uniforms_; }
    ScreenGeometry const& geometry() const { return geometry_; }
    ScreenSampler const& sampler() const { return sampler_; }
    ImageView background() const { return background_; }
    /// False where there is no recording to show or no room for it.
    bool showsScreen() const { return showsScreen_; }

    /// Background and drop shadow.
    Float4 behindScreen(Float2 point) const;
    /// Those, and the screen layer.
    Float4 withoutLoupe(Float2 point) const;
    /// The finished pixel.
    Float4 operator()(Float2 point) const;

private:
    CompositeUniforms uniforms_;
    ScreenGeometry geometry_;
    ScreenSampler sampler_;
    ImageView background_;
    bool showsScreen_;
};

}
