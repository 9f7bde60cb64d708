#pragma once

#include <vector>

#include <TavaroRender/Layers/Private/LayerList.h>

namespace tavaro {

/// The layers of a rounded outline around `rect`: one of a small box; nine pieces of a larger one, so that a box that
/// grows with the camera is never drawn again and the picture inside it is not touched.
void addBox(std::vector<PlacedLayer>& layers, LayerSpec look, CanvasRect const& rect, double opacity);

}
