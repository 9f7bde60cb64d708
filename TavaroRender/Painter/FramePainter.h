#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <TavaroCore/Values/Geometry.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Composition/ZoomUse.h>
#include <TavaroRender/Places/FramePlaces.h>
#include <TavaroRender/Renderer/Renderer.h>

namespace tavaro {

class ProjectPackage;
struct DemoProject;

/// Draws any frame of a project, revision after revision of it: for a preview, a still, a sheet and an export alike.
/// Movies stay open from one revision to the next, and what an edit leaves as it is, is neither worked out nor drawn
/// again. All failures are `PaintError`.
///
/// One thread at a time, but for this: between two revisions one thread may ask for `pictures` while another draws.
class FramePainter {
public:
    /// With `EffectFailure::stop` an effect that cannot be used is a failure of the frame; with `drop` it is left out.
    FramePainter(ProjectPackage const& package, Size2 canvas, RendererOptions const& options = {});
    FramePainter(FramePainter&&) noexcept;
    FramePainter& operator=(FramePainter&&) noexcept;
    ~FramePainter();

    /// Frames are those of this project from now on; the first call comes before any frame. Keeps a copy, which shares
    /// the project's large parts. What could not be found for the revision before is looked for again.
    void show(DemoProject const& project);

    /// Frames have that size from now on.
    void resize(Size2 canvas);

    DemoProject const& project() const;
    Size2 canvas() const;
    /// Seconds of the whole output: the edit with its title cards.
    double duration() const;
    /// How many revisions have been shown.
    std::int64_t revision() const;

    /// For who steps back: keeps so many bytes of the recordings' pictures before the present one of each. Before the
    /// first frame.
    void keepEarlier(std::size_t bytes);

    /// Opens all media of the project and loads what its frames need beside them, or throws the error of the first that
    /// cannot be used: an export fails before its first frame.
    void open();

    /// The frame at that output time; good until the next one is drawn.
    ImageView frame(double at);
    /// A copy of it.
    Image still(double at);

    /// Fails as every frame of this film would: a canvas that cannot be drawn, a project that shows nothing.
    void expectFrames() const;

    /// The two halves of `frame`: the pictures that it is made from, and the drawing.
    FramePictures pictures(double at);
    ImageView draw(double at, FramePictures const& pictures);

    /// Whether frames are drawn through the zooms from now on, as they are at first.
    void useZooms(ZoomUse zooms);

    /// Where the frame at that time has what can be taken hold of, as it is drawn now. On the drawing thread.
    FramePlaces places(double at);

    /// What the frame drawn last lacks of what the project asks for: the camera's colour table or matte, the picture of
    /// the background, a text or graphic. Of these only the matte may be missing where failing effects stop.
    std::vector<DroppedEffect> dropped() const;

    /// The threads that draw, for work on the frame before the next one. On the drawing thread.
    RowBands& rows();

    /// Frames drawn, those that only looked like the one before left out.
    std::int64_t framesDrawn() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
