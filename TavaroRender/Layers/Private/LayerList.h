#pragma once

#include <vector>

#include <TavaroRender/Composition/Private/CanvasGeometry.h>
#include <TavaroRender/Composition/Private/FreeCorner.h>
#include <TavaroRender/Layers/Private/LayerAnimation.h>
#include <TavaroRender/Layers/Private/LayerSpec.h>

namespace tavaro {

struct CaptionCue;
struct DemoProject;
struct FrameState;
struct Overlay;

/// How a layer's bitmap is put on the canvas.
enum class LayerPlace {
    centred,   // the body's centre at `at`, moved in where it would leave the canvas
    corner,    // the body in the canvas's corner `corner`
    arrow,     // the body's corner at the arrow's tail
    stretched, // the bitmap over `rect`
};

/// A layer of a frame before it is drawn.
struct PlacedLayer {
    LayerSpec look;
    LayerPlace place = LayerPlace::centred;
    CanvasCorner corner = CanvasCorner::bottomRight;
    CanvasPoint at;
    CanvasRect rect;
    double opacity = 1; // 0…1, above 0
    double drop = 0;    // downward, canvas pixels
    double scale = 1;
    Overlay const* overlay = nullptr; // that it shows
    CaptionCue const* caption = nullptr;
};

/// Whether layers are as they come, are there and go, or all of them as while they are there.
enum class LayerMotion { animated, resting };

/// The layers of the frame in the order they are drawn.
std::vector<PlacedLayer> placedLayers(FrameState const& state, DemoProject const& project,
                                      LayerMotion motion = LayerMotion::animated);

/// Where a bitmap of that size with that body lies on the canvas. At rest it lies on whole pixels.
CanvasRect placed(PlacedLayer const& layer, double width, double height, CanvasRect const& body);

}
