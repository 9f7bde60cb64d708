#pragma once

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

class ScreenTexture;
struct BlitUniforms;
struct CameraUniforms;
struct CompositeUniforms;
struct CubeLUT;
struct CursorUniforms;
struct RegionUniforms;

/// The kernels in plain 32-bit float arithmetic, one function per formula: what correct means. Each draws the rows
/// `rowBegin` … `rowEnd` − 1 of the canvas and touches nothing else. Results are rounded to nearest.
void compositeReference(CompositeUniforms const& uniforms, ScreenTexture const& screen, ImageView background,
                        MutableImageView canvas, int rowBegin, int rowEnd);
void cursorOverlayReference(CursorUniforms const& uniforms, MutableImageView canvas, int rowBegin, int rowEnd);
void cameraOverlayReference(CameraUniforms const& uniforms, ImageView camera, ImageView matte, CubeLUT const* lut,
                            MutableImageView canvas, int rowBegin, int rowEnd);
void blitLayerReference(BlitUniforms const& uniforms, ImageView layer, MutableImageView canvas, int rowBegin,
                        int rowEnd);
/// Both pictures are of one size and lie apart.
void regionEffectReference(RegionUniforms const& uniforms, ImageView source, MutableImageView target, int rowBegin,
                           int rowEnd);

}
