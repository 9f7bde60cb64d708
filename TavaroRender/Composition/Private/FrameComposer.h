#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <TavaroCore/Values/Geometry.h>
#include <TavaroRender/Composition/Private/FrameState.h>
#include <TavaroRender/Composition/ZoomUse.h>

namespace tavaro {

struct DemoProject;

/// Turns a project and an output time into the numbers of one frame, for preview, still and export alike. Built once
/// for a project and a canvas; every frame can be asked for by itself, in any order, from any thread. A frame costs a
/// walk over the zooms and some binary searches, however long the take.
class FrameComposer {
public:
    /// Keeps a copy of the project. The fit is that of the project's export settings. `cameraSize` is that of the
    /// camera's movie; where it is not known, a picture of 16:9 is assumed.
    FrameComposer(DemoProject const& project, Size2 canvas, std::optional<Size2> cameraSize = {});
    /// The same for another revision of the project, or another canvas. What the change leaves as it is, the pointer's
    /// path and the plan of scenes above all, is shared with this one, so that a change costs what it is about.
    FrameComposer revised(DemoProject const& project, Size2 canvas, std::optional<Size2> cameraSize = {}) const;

    FrameComposer(FrameComposer&&) noexcept;
    FrameComposer& operator=(FrameComposer&&) noexcept;
    ~FrameComposer();

    DemoProject const& project() const;
    Size2 canvas() const;
    /// Seconds of the whole output: the edit with its title cards.
    double duration() const;

    FrameState state(double at, ZoomUse zooms = ZoomUse::zoomed) const;

    /// Of each zoom whose time it is, loupes left out.
    std::vector<ZoomWindow> zoomWindows(double at) const;

    /// The parts of `state` that tell which frames are shown: of the recording, and of the camera's movie.
    std::optional<ShownSource> source(double at) const;
    std::optional<ShownSource> cameraSource(double at) const;

private:
    struct Derived;
    explicit FrameComposer(std::unique_ptr<Derived const> derived);

    std::unique_ptr<Derived const> derived_;
};

}
