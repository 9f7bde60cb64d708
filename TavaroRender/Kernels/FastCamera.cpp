#include <TavaroRender/Kernels/Private/FastCamera.h>

#include <hwy/cache_control.h>

#include <TavaroRender/Kernels/Private/CameraRow.h>

namespace tavaro {

namespace {

/// Pieces of rows are too short for the machine to see the next ones coming.
void prefetch(std::uint8_t const* row, PixelSpan columns) {
    for (int x = columns.begin; x < columns.end; x += 16) hwy::Prefetch(row + 4 * static_cast<std::ptrdiff_t>(x));
}

}

void FastCamera::draw(CameraUniforms const& uniforms, ImageView camera, ImageView matte, CubeLUT const* lut,
                      MutableImageView canvas, RowBands& rows) {
    if (!cameraIsVisible(uniforms, camera)) return;
    plan_.prepare(uniforms, camera, matte, lut, canvas.width, canvas.height);
    auto const reached = plan_.rows();
    if (reached.isEmpty() || plan_.columns().isEmpty()) return;
    shadow_.prepare(plan_);
    rows.run(reached.end - reached.begin, [&](int begin, int end) {
        CameraScratch scratch;
        for (int y = reached.begin + begin; y < reached.begin + end; ++y) {
            if (y + 1 < reached.end) prefetch(canvas.row(y + 1), plan_.columns());
            drawCameraRow(plan_, scratch, shadow_.row(y), canvas.row(y), y);
        }
    });
}

}
