#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroMedia/Frames/VideoFrame.h>
#include <TavaroPlatform/Queues/RowBands.h>
#include <TavaroRender/Compositor/Compositor.h>
#include <TavaroRender/Places/FramePlaces.h>
#include <TavaroRender/Renderer/DroppedEffect.h>

namespace tavaro {

class ProjectPackage;
struct DemoProject;
struct FrameState;

struct RendererOptions {
    CompositorBackend backend = CompositorBackend::cpu;
    int threads = 0; // that draw rows, the caller's included; 0: one a core
    EffectFailure failure = EffectFailure::drop;
};

/// What a frame is made from. Each may be empty where the frame's state shows none, or there is none.
struct FramePictures {
    VideoFrame screen;
    VideoFrame camera;
    std::shared_ptr<Image const> matte; // of the camera's picture: red is how much of a pixel is the person
};

/// Draws frames of one project. Owns all that drawing takes: the threads that draw rows, the compositor with its kept
/// layers, the recording's picture as RGBA, the background image and the canvas. One thread at a time.
class Renderer {
public:
    explicit Renderer(ProjectPackage const& package, RendererOptions const& options = {});
    Renderer(Renderer&&) noexcept;
    Renderer& operator=(Renderer&&) noexcept;
    ~Renderer();

    /// Frames are those of that revision of the project from now on. What could not be used is tried again.
    void beginRevision(std::int64_t revision);

    /// Loads what the project's frames need beside the recordings. Where failing effects stop, throws `MediaError` for
    /// the background and `CameraTableError`.
    void prepare(DemoProject const& project, int canvasWidth, int canvasHeight);

    /// Draws the frame and returns the canvas, which stays good until the next call. A movie's frame is converted once
    /// however often it is drawn; a frame that looks like the one before is not drawn again, and where only what lies
    /// over the recording changed, only that is drawn. Throws as `prepare`, and `LayerError`.
    ImageView render(FrameState const& state, DemoProject const& project, FramePictures const& pictures);

    /// Where the frame has what can be taken hold of, every layer as while it is there. What `render` has drawn for it
    /// is not drawn again; a text that cannot be drawn has no place.
    FramePlaces places(FrameState const& state, DemoProject const& project);

    /// What the latest frame is drawn without.
    std::vector<DroppedEffect> dropped() const;

    /// Frames drawn, those that only looked like the one before left out.
    std::int64_t framesDrawn() const;

    /// The threads that draw, for work on the canvas between two frames.
    RowBands& rows();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
