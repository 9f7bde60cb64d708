#pragma once

#include <vector>

#include <TavaroRender/Kernels/RegionUniforms.h>

namespace tavaro {

struct FrameState;

/// What happens to regions of the recording before it is composited, in order: redactions first, so that nothing of
/// what they hide gets into what follows, then the overlays that belong into the picture (a box is a layer, drawn over
/// it). `width` and `height` are the recording's.
std::vector<RegionUniforms> regionPasses(FrameState const& state, int width, int height);

}
