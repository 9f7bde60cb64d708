#pragma once

#include <TavaroRender/Kernels/Vectors.h>

namespace tavaro {

struct CursorUniforms;

/// Where a part of the drawing may change pixels: between two corners, in canvas pixels, nowhere, or everywhere.
struct DrawingReach {
    enum class Extent { nowhere, box, everywhere };

    Extent extent = Extent::nowhere;
    Float2 low;
    Float2 high;

    /// The smallest reach that holds both.
    DrawingReach unionWith(DrawingReach const& other) const;
};

/// Of the click effect.
DrawingReach clickReach(CursorUniforms const& uniforms);
/// Of the pointer with its trail, and of the glow or the dark around it.
DrawingReach pointerReach(CursorUniforms const& uniforms);
DrawingReach haloReach(CursorUniforms const& uniforms);

}
