#pragma once

#include <optional>

#include <TavaroRender/Kernels/CameraUniforms.h>

namespace tavaro {

struct DemoProject;
struct FrameState;

/// What the camera's picture can be drawn with.
struct CameraMeans {
    int width = 0; // of the camera's picture; 0 where there is none
    int height = 0;
    bool hasMatte = false; // the person can be told from the room
    bool hasTable = false; // the project's own colour table can be used
};

/// The camera of a frame in the compositor's terms; none where there is none to show.
std::optional<CameraUniforms> cameraPass(FrameState const& state, DemoProject const& project, CameraMeans const& means);

/// Whether nothing can be seen of what lies beneath the camera.
bool coversCanvas(CameraUniforms const& pass);

/// Camera pixels that one canvas pixel covers, for a picture of that size.
double cameraPixelsPerPixel(CameraUniforms const& pass, int width, int height);

}
