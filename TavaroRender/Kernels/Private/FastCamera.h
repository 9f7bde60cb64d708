#pragma once

#include <TavaroPlatform/Queues/RowBands.h>
#include <TavaroRender/Kernels/Private/CameraPlan.h>
#include <TavaroRender/Kernels/Private/CameraShadow.h>

namespace tavaro {

/// The `cameraOverlay` kernel, fast: touches only what the box and its shadow reach, by the vector unit. Keeps the
/// shadow between frames.
class FastCamera {
public:
    void draw(CameraUniforms const& uniforms, ImageView camera, ImageView matte, CubeLUT const* lut,
              MutableImageView canvas, RowBands& rows);

private:
    CameraPlan plan_;
    CameraShadow shadow_;
};

}
