#pragma once

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

class ScreenSampler;
struct CompositeUniforms;
struct ScreenGeometry;

/// The share of the lens's radius that magnifies evenly; from there the magnification falls to 1 at the rim.
inline constexpr float loupeFlatShare = 0.78f;

bool loupeIsVisible(CompositeUniforms const& uniforms);

/// No point is seen through the lens at a magnification below this one; 1 without a lens.
float leastMagnification(CompositeUniforms const& uniforms);

/// Magnification at a distance from the lens's middle, given as a share of its radius.
float loupeMagnification(CompositeUniforms const& uniforms, float share);

/// Everything that the loupe's pixels are made from.
struct LoupeScene {
    CompositeUniforms const& uniforms;
    ScreenGeometry const& geometry;
    ScreenSampler const& sampler;
    ImageView background;
};

/// How far from the lens's middle the loupe still changes pixels.
float loupeReach(CompositeUniforms const& uniforms);

/// What the lens shows at a distance `offset` from its middle, before the glass is drawn.
Float3 seenThroughLens(LoupeScene const& scene, Float2 offset);

/// The glass over what is seen through it: vignette, highlight, rim light, ring, outline.
Float3 withGlass(CompositeUniforms const& uniforms, Float3 seen, Float2 offset);

/// How much of the pixel the lens covers, its outline included.
float lensCoverage(CompositeUniforms const& uniforms, Float2 offset);

/// Strength of the shadow that the lens throws on the canvas at `offset`; 0 inside the lens.
float loupeShadow(CompositeUniforms const& uniforms, Float2 offset);

/// The pixel with the loupe over it.
Float4 withLoupe(LoupeScene const& scene, Float4 pixel, Float2 point);

}
