#pragma once

#include <TavaroCore/Values/Geometry.h>

#include <algorithm>

namespace tavaro {

inline double smallerSide(Size2 size) { return static_cast<double>(std::min(size.width, size.height)); }

/// Pixels that one pixel of a canvas whose smaller side is 1080 becomes: what the document's lengths are given in.
inline double canvasUnit(Size2 canvas) { return smallerSide(canvas) / 1080; }

}
