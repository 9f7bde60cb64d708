#pragma once

#include <memory>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Composition/Private/CanvasGeometry.h>

namespace tavaro {

/// A text or a graphic as a bitmap, and where it lies on the canvas. The same bitmap is the same drawing: layers that
/// share a texture differ only in where they are and how strong.
struct RasterLayer {
    std::shared_ptr<Image const> texture; // RGBA, premultiplied
    CanvasRect rect;
    double opacity = 1; // 0…1

    bool operator==(RasterLayer const&) const = default;
};

}
