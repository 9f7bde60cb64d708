#include <TavaroRender/Kernels/FastCamera.h>

#include <TavaroRender/Kernels/CameraRow.h>

namespace tavaro {

void FastCamera::draw(CameraUniforms const& uniforms, ImageView camera, ImageView matte, CubeLUT const* lut,
                      MutableImageView canvas, FunctionRef<void(int, FunctionRef<void(int, int)>)> inBands) {
    if (!cameraIsVisible(uniforms, camera)) return;
    plan_.prepare(uniforms, camera, matte, lut, canvas.width, canvas.height);
    auto const rows = plan_.rows();
    if (rows.isEmpty() || plan_.columns().isEmpty()) return;
    shadow_.prepare(plan_);
    inBands(rows.end - rows.begin, [&](int begin, int end) {
        CameraScratch scratch;
        for (int y = rows.begin + begin; y < rows.begin + end; ++y)
            drawCameraRow(plan_, scratch, shadow_.row(y), canvas.row(y), y);
    });
}

}
