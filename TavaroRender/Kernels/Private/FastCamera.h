#pragma once

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroRender/Kernels/Private/CameraPlan.h>
#include <TavaroRender/Kernels/Private/CameraShadow.h>

namespace tavaro {

/// The `cameraOverlay` kernel, fast: touches only what the box and its shadow reach, by the vector unit. Keeps the
/// shadow between frames.
class FastCamera {
public:
    /// `inBands(rowCount, band)` calls `band(begin, end)` until all of 0…rowCount−1 are covered.
    void draw(CameraUniforms const& uniforms, ImageView camera, ImageView matte, CubeLUT const* lut,
              MutableImageView canvas, FunctionRef<void(int, FunctionRef<void(int, int)>)> inBands);

private:
    CameraPlan plan_;
    CameraShadow shadow_;
};

}
