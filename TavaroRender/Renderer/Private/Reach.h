#pragma once

#include <optional>

#include <TavaroRender/Renderer/Private/CanvasHistory.h>

namespace tavaro {

struct BlitUniforms;
struct CameraUniforms;
struct CursorUniforms;

/// The pixels that a pass may touch, on the safe side; none when it may touch all.
std::optional<PixelRect> reach(CursorUniforms const& pass);
std::optional<PixelRect> reach(CameraUniforms const& pass);
PixelRect reach(BlitUniforms const& pass);

}
