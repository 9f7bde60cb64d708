#pragma once

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

struct CompositeUniforms;

/// True where the background is drawn from the picture: in image mode, with a picture wider than the 1-px placeholder.
bool backgroundIsImage(CompositeUniforms const& uniforms, ImageView image);

/// The background's formula at a normalised point of the canvas, before dither; black where the mode has none.
Float3 backgroundColor(CompositeUniforms const& uniforms, Float2 uv);

/// The background as the loupe sees it at a canvas point: picture or formula, without dither.
Float3 backgroundBehind(CompositeUniforms const& uniforms, ImageView image, Float2 point);

/// What the dither adds to each channel of a gradient at the pixel whose centre is `point`.
float backgroundDither(Float2 point);

/// The background of the pixel whose centre is `point`: dithered against banding, transparent in mode none.
Float4 backgroundPixel(CompositeUniforms const& uniforms, ImageView image, Float2 point);

}
