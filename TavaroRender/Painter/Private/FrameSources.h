#pragma once

#include <memory>
#include <optional>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroRender/Painter/Private/CameraMatte.h>
#include <TavaroRender/Painter/Private/RecordingFrames.h>
#include <TavaroRender/Renderer/Renderer.h>

namespace tavaro {

class FrameComposer;
struct DemoProject;

/// The pictures that a project's frames are made from: of the screen, of the camera, and the camera's matte. One thread
/// at a time. Failures are `PaintError`, as `RecordingFrames` tells them.
class FrameSources {
public:
    /// Without a matte given, the one that came with the recording.
    explicit FrameSources(ProjectPackage const& package, std::unique_ptr<CameraMatte> matte = nullptr);

    void keepEarlier(std::size_t bytes) { recordings_.keepEarlier(bytes); }

    /// Opens every movie that the project shows, or fails as reading from it would.
    void open(DemoProject const& project);

    /// Of the asset's movie, in square pixels; none where it cannot be opened.
    std::optional<Size2> size(std::string_view asset);

    /// What could not be found may be there from now on.
    void retry() { matte_->retry(); }

    /// What the frame at that output time shows.
    FramePictures pictures(FrameComposer const& composer, double at);

private:
    RecordingFrames recordings_;
    std::unique_ptr<CameraMatte> matte_;
};

}
