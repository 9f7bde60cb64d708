#pragma once

#include <TavaroCore/Style/CanvasLayout.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroRender/Composition/Private/CanvasGeometry.h>

namespace tavaro {

/// A canvas divided between the camera and the recording.
struct SplitPanes {
    CanvasRect camera;
    CanvasRect screen;
};

/// `padding` is the free canvas around and between the panes, a share of the smaller side; what is more than a pane
/// needs to breathe counts as that. Without it the panes meet, and the recording goes on a little beneath the camera,
/// so that no background shows through the seam.
SplitPanes splitPanes(CanvasLayout::Split const& split, Size2 canvas, double padding);

/// The strip between the panes.
struct PaneDivider {
    CanvasRect rect;                 // at least as wide as the seam
    CanvasPoint noCamera, allCamera; // its middle, were the camera's share 0 or 1
};
PaneDivider paneDivider(CanvasLayout::Split split, Size2 canvas, double padding);

/// A pane moved some of its own size toward the canvas's edge that it lies at: where it comes in from.
CanvasRect paneAside(CanvasRect pane, SplitArrangement arrangement);

}
