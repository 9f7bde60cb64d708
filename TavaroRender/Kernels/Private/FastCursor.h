#pragma once

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

struct CursorUniforms;

/// The `cursorOverlay` kernel, fast: touches only the pixels that the click and the pointer reach, by the vector unit.
/// Draws those among the rows `rowBegin` … `rowEnd` − 1.
void cursorOverlayFast(CursorUniforms const& uniforms, MutableImageView canvas, int rowBegin, int rowEnd);

}
