#pragma once

#include <TavaroCore/Style/CameraSettings.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroRender/Composition/Private/CanvasGeometry.h>

namespace tavaro {

/// Width and height of the camera's bubble, in canvas pixels: `size` of the canvas's smaller side high, and as wide as
/// high but for the wide shape. Never wider than 0.9 of the canvas, nor higher than it.
CanvasPoint bubbleSize(CameraSettings const& settings, Size2 canvas);

/// A bubble of that size around a centre given as shares of the canvas, moved so that all of it lies on the canvas.
CanvasRect positionedBubbleRect(CanvasPoint size, UnitPoint2 const& center, Size2 canvas);

/// A bubble in its place, `padding` away from the canvas's edges.
CanvasRect placedBubbleRect(CameraSettings const& settings, CanvasPoint size, CameraPlacement placement, Size2 canvas);

/// Radius of a bubble's corners.
double bubbleRadius(CameraShape shape, CanvasPoint size);

}
