#include <TavaroRender/Compositor/Compositor.h>

#include <TavaroRender/Compositor/RowExecutor.h>
#include <TavaroRender/Compositor/ScreenTexture.h>
#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/CursorUniforms.h>
#include <TavaroRender/Kernels/FastComposite.h>
#include <TavaroRender/Kernels/FastCursor.h>
#include <TavaroRender/Kernels/Reference.h>

namespace tavaro {

struct Compositor::State {
    CompositorBackend backend;
    RowExecutor* rows;
    FastComposite fast;

    State(CompositorBackend backend, RowExecutor* rows) : backend(backend), rows(rows) {}

    void inBands(int rowCount, FunctionRef<void(int, int)> band) {
        if (rowCount <= 0) return;
        if (rows)
            rows->run(rowCount, band);
        else
            band(0, rowCount);
    }
};

Compositor::Compositor(CompositorBackend backend, RowExecutor* rows) : state_(std::make_unique<State>(backend, rows)) {}

Compositor::Compositor(Compositor&&) noexcept = default;
Compositor& Compositor::operator=(Compositor&&) noexcept = default;
Compositor::~Compositor() = default;

CompositorBackend Compositor::backend() const { return state_->backend; }

void Compositor::composite(CompositeUniforms const& uniforms, ScreenTexture const& screen, ImageView background,
                           MutableImageView canvas) {
    if (canvas.isEmpty()) return;
    auto const inBands = [&](FunctionRef<void(int, int)> band) { state_->inBands(canvas.height, band); };
    if (state_->backend == CompositorBackend::cpu)
        return state_->fast.draw(uniforms, screen, background, canvas, inBands);
    inBands([&](int begin, int end) { compositeReference(uniforms, screen, background, canvas, begin, end); });
}

void Compositor::cursorOverlay(CursorUniforms const& uniforms, MutableImageView canvas) {
    if (canvas.isEmpty()) return;
    auto const draw = state_->backend == CompositorBackend::cpu ? cursorOverlayFast : cursorOverlayReference;
    state_->inBands(canvas.height, [&](int begin, int end) { draw(uniforms, canvas, begin, end); });
}

void Compositor::forgetBackground() { state_->fast.forget(); }

}
