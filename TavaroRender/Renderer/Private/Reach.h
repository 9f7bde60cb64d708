#pragma once

#include <optional>

#include <TavaroRender/Renderer/Private/CanvasHistory.h>

namespace tavaro {

struct BlitUniforms;
struct CameraUniforms;
struct CursorUniforms;

/// The pixels that a pass may touch, on the safe side; none when it may touch all.
std::optional<CanvasBounds> reach(CursorUniforms const& pass);
std::optional<CanvasBounds> reach(CameraUniforms const& pass);
CanvasBounds reach(BlitUniforms const& pass);

}
