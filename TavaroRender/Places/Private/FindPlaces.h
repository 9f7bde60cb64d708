#pragma once

#include <TavaroRender/Layers/Private/LayerRasterizer.h>
#include <TavaroRender/Places/FramePlaces.h>

namespace tavaro {

struct DemoProject;
struct FrameState;

/// Where that frame has what can be taken hold of, but for the zooms, which its state does not tell. `draw` gives the
/// bitmaps that texts are measured by; texts without one have no place.
FramePlaces findPlaces(FrameState const& state, DemoProject const& project, LayerRasterizer::Draw draw);

}
