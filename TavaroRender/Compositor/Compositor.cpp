#include <TavaroRender/Compositor/Compositor.h>

#include <cstring>
#include <utility>

#include <TavaroCore/Looks/CubeLUT.h>
#include <TavaroRender/Kernels/BlitUniforms.h>
#include <TavaroRender/Kernels/CameraUniforms.h>
#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/CursorUniforms.h>
#include <TavaroRender/Kernels/Private/FastBlit.h>
#include <TavaroRender/Kernels/Private/FastCamera.h>
#include <TavaroRender/Kernels/Private/FastComposite.h>
#include <TavaroRender/Kernels/Private/FastCursor.h>
#include <TavaroRender/Kernels/Private/FastRegion.h>
#include <TavaroRender/Kernels/Private/Reference.h>
#include <TavaroRender/Kernels/RegionUniforms.h>
#include <TavaroRender/Kernels/ScreenTexture.h>

namespace tavaro {

struct Compositor::State {
    CompositorBackend backend;
    RowBands& rows;
    FastComposite fast;
    FastCamera camera;

    State(CompositorBackend backend, RowBands& rows) : backend(backend), rows(rows) {}
};

Compositor::Compositor(CompositorBackend backend, RowBands& rows) : state_(std::make_unique<State>(backend, rows)) {}

Compositor::Compositor(Compositor&&) noexcept = default;
Compositor& Compositor::operator=(Compositor&&) noexcept = default;
Compositor::~Compositor() = default;

CompositorBackend Compositor::backend() const { return state_->backend; }

void Compositor::composite(CompositeUniforms const& uniforms, ScreenTexture const& screen, ImageView background,
                           MutableImageView canvas) {
    if (canvas.isEmpty()) return;
    if (state_->backend == CompositorBackend::cpu)
        return state_->fast.draw(uniforms, screen, background, canvas, state_->rows);
    state_->rows.run(canvas.height,
                     [&](int begin, int end) { compositeReference(uniforms, screen, background, canvas, begin, end); });
}

void Compositor::cursorOverlay(CursorUniforms const& uniforms, MutableImageView canvas) {
    if (canvas.isEmpty()) return;
    auto const draw = state_->backend == CompositorBackend::cpu ? cursorOverlayFast : cursorOverlayReference;
    state_->rows.run(canvas.height, [&](int begin, int end) { draw(uniforms, canvas, begin, end); });
}

void Compositor::cameraOverlay(CameraUniforms const& uniforms, ImageView camera, ImageView matte, CubeLUT const* lut,
                               MutableImageView canvas) {
    if (canvas.isEmpty()) return;
    if (lut && lut->size < 2) lut = nullptr; // no table yet
    if (state_->backend == CompositorBackend::cpu) {
        return state_->camera.draw(uniforms, camera, matte, lut, canvas, state_->rows);
    }
    state_->rows.run(canvas.height, [&](int begin, int end) {
        cameraOverlayReference(uniforms, camera, matte, lut, canvas, begin, end);
    });
}

void Compositor::blitLayer(BlitUniforms const& uniforms, ImageView layer, MutableImageView canvas) {
    if (canvas.isEmpty()) return;
    if (state_->backend == CompositorBackend::cpu) {
        FastBlit const blit(uniforms, layer, canvas);
        return state_->rows.run(blit.rowCount(), [&](int begin, int end) { blit.draw(begin, end); });
    }
    state_->rows.run(canvas.height,
                     [&](int begin, int end) { blitLayerReference(uniforms, layer, canvas, begin, end); });
}

void Compositor::regionEffect(RegionUniforms const& uniforms, ImageView source, MutableImageView target) {
    if (source.isEmpty()) return;
    if (state_->backend == CompositorBackend::cpu) {
        FastRegion const region(uniforms, source, target);
        auto const rows = region.rows();
        return state_->rows.run(rows.second,
                                [&](int begin, int end) { region.draw(rows.first + begin, rows.first + end); });
    }
    Image unchanged;
    if (source.pixels == target.pixels) {
        unchanged = Image(source.width, source.height);
        for (int y = 0; y < source.height; ++y)
            std::memcpy(unchanged.row(y), source.row(y), 4 * static_cast<std::size_t>(source.width));
        source = std::as_const(unchanged).view();
    }
    state_->rows.run(target.height,
                     [&](int begin, int end) { regionEffectReference(uniforms, source, target, begin, end); });
}

void Compositor::forgetBackground() { state_->fast.forget(); }

}
