#include <TavaroRender/Kernels/FastCamera.h>

#include <TavaroRender/Kernels/CameraRow.h>
#include <TavaroRender/Kernels/Reference.h>

namespace tavaro {

namespace {

/// By the formula, over what may change and nothing else.
void drawExactly(CameraPlan const& plan, MutableImageView canvas, int rowBegin, int rowEnd) {
    auto const left = plan.columns().begin;
    auto const top = plan.rows().begin;
    auto moved = plan.uniforms();
    moved.center = moved.center - Float2{static_cast<float>(left), static_cast<float>(top)};
    MutableImageView const part{canvas.row(top) + 4 * static_cast<std::ptrdiff_t>(left), plan.columns().end - left,
                                plan.rows().end - top, canvas.stride};
    cameraOverlayReference(moved, plan.camera(), plan.matte(), plan.lut(), part, rowBegin, rowEnd);
}

}

void FastCamera::draw(CameraUniforms const& uniforms, ImageView camera, ImageView matte, CubeLUT const* lut,
                      MutableImageView canvas, FunctionRef<void(int, FunctionRef<void(int, int)>)> inBands) {
    if (!cameraIsVisible(uniforms, camera)) return;
    plan_.prepare(uniforms, camera, matte, lut, canvas.width, canvas.height);
    auto const rows = plan_.rows();
    if (rows.isEmpty() || plan_.columns().isEmpty()) return;
    inBands(rows.end - rows.begin, [&](int begin, int end) {
        if (plan_.isGraded() && !plan_.curves().areExact()) return drawExactly(plan_, canvas, begin, end);
        for (int i = begin; i < end; ++i) drawCameraRow(plan_, canvas.row(rows.begin + i), rows.begin + i);
    });
}

}
