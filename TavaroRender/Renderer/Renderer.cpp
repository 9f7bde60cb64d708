#include <TavaroRender/Renderer/Renderer.h>

#include <variant>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Frames/VideoFrame.h>
#include <TavaroRender/Composition/FrameState.h>
#include <TavaroRender/Compositor/ScreenTexture.h>
#include <TavaroRender/Renderer/BackgroundImages.h>
#include <TavaroRender/Renderer/FrameUniforms.h>
#include <TavaroRender/Renderer/PointerPatch.h>
#include <TavaroRender/Renderer/RowPool.h>

namespace tavaro {

struct Renderer::State {
    State(ProjectPackage const& package, RendererOptions const& options)
        : rows(options.threads)
        , compositor(options.backend, &rows)
        , backgrounds(package) {}

    RowPool rows; // before the compositor, which draws with it
    Compositor compositor;
    BackgroundImages backgrounds;
    FrameConverter converter;
    Image screenPixels;
    ScreenTexture screen;
    std::optional<std::uint64_t> screenIdentity; // of the frame in `screen`; none while it is empty
    Image canvas;
    std::optional<FrameUniforms> drawn; // what the canvas shows
    PointerPatch beneathPointer;        // of the canvas, while `drawn` holds
    std::int64_t framesDrawn = 0;

    /// Whether the recording's picture is another one than before.
    bool showScreen(VideoFrame const& frame);
    bool sizeCanvas(Size2 size);
    ImageView background(DemoProject const& project, Size2 canvas);
};

bool Renderer::State::showScreen(VideoFrame const& frame) {
    auto const identity = frame.isEmpty() ? std::nullopt : std::optional{frame.identity()};
    if (identity == screenIdentity) return false;
    screenIdentity.reset(); // also where converting throws half way
    if (identity) {
        converter.convert(frame, screenPixels, [this](int count, auto band) { rows.run(count, band); });
        screen.setFrame(screenPixels.view());
    } else {
        screen.setFrame({});
    }
    screenIdentity = identity;
    return true;
}

bool Renderer::State::sizeCanvas(Size2 size) {
    if (canvas.width() == size.width && canvas.height() == size.height) return false;
    canvas = Image(static_cast<int>(size.width), static_cast<int>(size.height));
    return true;
}

ImageView Renderer::State::background(DemoProject const& project, Size2 size) {
    auto const* style = std::get_if<BackgroundStyle::ImageFile>(&project.background.content);
    if (!style) return {};
    int const before = backgrounds.generation();
    auto const image = backgrounds.ensure(*style, size);
    if (backgrounds.generation() != before) {
        compositor.forgetBackground();
        drawn.reset();
    }
    return image;
}

Renderer::Renderer(ProjectPackage const& package, RendererOptions const& options)
    : state_(std::make_unique<State>(package, options)) {}
Renderer::Renderer(Renderer&&) noexcept = default;
Renderer& Renderer::operator=(Renderer&&) noexcept = default;
Renderer::~Renderer() = default;

void Renderer::prepare(DemoProject const& project, int canvasWidth, int canvasHeight) {
    state_->background(project, {canvasWidth, canvasHeight});
}

ImageView Renderer::render(FrameState const& frame, DemoProject const& project, VideoFrame const& screen) {
    auto& state = *state_;
    auto const uniforms = frameUniforms(frame, project);
    auto const background = state.background(project, frame.canvas);
    bool const hasNewScreen = state.showScreen(screen);
    bool const hasNewCanvas = state.sizeCanvas(frame.canvas);
    bool const isSamePicture = !hasNewScreen && !hasNewCanvas && state.drawn;
    if (isSamePicture && *state.drawn == uniforms) return state.canvas.view();

    bool const isSameBeneath = isSamePicture && state.drawn->composite == uniforms.composite;
    state.drawn.reset();
    auto const canvas = state.canvas.view();
    if (!isSameBeneath || !state.beneathPointer.restore(canvas)) {
        state.compositor.composite(uniforms.composite, state.screen, background, canvas);
    }
    state.beneathPointer.take(uniforms, canvas);
    for (int pass = 0; pass < uniforms.cursorPasses; ++pass) {
        state.compositor.cursorOverlay(uniforms.cursor[pass], canvas);
    }
    state.drawn = uniforms;
    ++state.framesDrawn;
    return state.canvas.view();
}

std::int64_t Renderer::framesDrawn() const { return state_->framesDrawn; }

void Renderer::inBands(int rowCount, FunctionRef<void(int, int)> band) { state_->rows.run(rowCount, band); }

}
