#pragma once

#include <span>

#include <TavaroCore/Values/Geometry.h>
#include <TavaroRender/Composition/Private/CanvasGeometry.h>

namespace tavaro {

enum class CanvasCorner { bottomRight, bottomLeft, topRight, topLeft };

/// A part of the canvas that is covered for some time.
struct Covered {
    CanvasRect rect;
    double seconds = 0;
};

/// The corner in which a small mark is covered for the shortest time; of equals the first in the order above.
CanvasCorner freeCorner(Size2 canvas, std::span<Covered const> covered);

}
