#pragma once

#include <cstdint>
#include <memory>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroMedia/Frames/RowBands.h>
#include <TavaroRender/Compositor/Compositor.h>

namespace tavaro {

class ProjectPackage;
class VideoFrame;
struct DemoProject;
struct FrameState;

struct RendererOptions {
    CompositorBackend backend = CompositorBackend::cpu;
    int threads = 0; // that draw rows, the caller's included; 0: one a core
};

/// Draws frames of one project. Owns all that drawing takes: the threads that draw rows, the compositor with its kept
/// layers, the recording's picture as RGBA, the background image and the canvas. One thread at a time.
class Renderer {
public:
    explicit Renderer(ProjectPackage const& package, RendererOptions const& options = {});
    Renderer(Renderer&&) noexcept;
    Renderer& operator=(Renderer&&) noexcept;
    ~Renderer();

    /// Loads what the project's frames need beside the recording. Throws `MediaError`.
    void prepare(DemoProject const& project, int canvasWidth, int canvasHeight);

    /// Draws the frame and returns the canvas, which stays good until the next call. `screen` is the recording's frame
    /// and may be empty where the state shows none. A recording's frame is converted once however often it is drawn,
    /// and a frame that looks like the one before is not drawn again. Throws `MediaError`.
    ImageView render(FrameState const& state, DemoProject const& project, VideoFrame const& screen);

    /// Frames drawn, those that only looked like the one before left out.
    std::int64_t framesDrawn() const;

    /// Shares rows over the renderer's threads, for work on its canvas between two frames.
    void inBands(int rowCount, FunctionRef<void(int begin, int end)> band);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
