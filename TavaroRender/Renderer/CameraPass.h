#pragma once

#include <optional>

#include <TavaroRender/Kernels/CameraUniforms.h>

namespace tavaro {

struct DemoProject;
struct FrameState;

/// The camera of a frame in the compositor's terms; none where there is none to show. `hasMatte`: the person can be
/// told from the room. `hasLUT`: the project's own colour table can be used.
std::optional<CameraUniforms> cameraPass(FrameState const& state, DemoProject const& project, bool hasMatte,
                                         bool hasLUT);

/// Camera pixels that one canvas pixel covers, for a picture of that size.
double cameraPixelsPerPixel(CameraUniforms const& pass, int width, int height);

}
