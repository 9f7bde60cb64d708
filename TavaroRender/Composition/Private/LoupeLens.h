#pragma once

#include <TavaroRender/Composition/Private/CanvasGeometry.h>

namespace tavaro {

/// Share of the lens's radius that magnifies evenly; beyond it the glass relaxes to 1 × at the rim. The compositor's
/// lens has the same flat zone.
inline constexpr double loupeFlatRadius = 0.78;

/// The glass loupe as it lies on the canvas.
struct LoupeLens {
    CanvasPoint center;
    double radius = 0;
    double magnification = 1;
    double presence = 0;

    /// Where a point of the canvas is seen through the glass; points outside the lens stay where they are.
    CanvasPoint seen(CanvasPoint point) const;
};

}
