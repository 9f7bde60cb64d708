#pragma once

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

class ScreenTexture;
struct CompositeUniforms;
struct CursorUniforms;

/// The kernels in plain 32-bit float arithmetic, one function per formula: what correct means. Each draws the rows
/// `rowBegin` … `rowEnd` − 1 of the canvas and touches nothing else. Results are rounded to nearest.
void compositeReference(CompositeUniforms const& uniforms, ScreenTexture const& screen, ImageView background,
                        MutableImageView canvas, int rowBegin, int rowEnd);
void cursorOverlayReference(CursorUniforms const& uniforms, MutableImageView canvas, int rowBegin, int rowEnd);

}
