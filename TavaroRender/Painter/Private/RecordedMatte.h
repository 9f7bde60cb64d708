#pragma once

#include <optional>
#include <string>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Frames/VideoFrame.h>
#include <TavaroRender/Painter/Private/CameraMatte.h>

namespace tavaro {

class RecordingFrames;

/// The matte that came with the recording: the transparency of the camera's own movie, or else a grey movie beside it,
/// named "camera.matte.mp4" (or .mov, .mkv, .webm) for a camera's "camera.mp4".
class RecordedMatte final : public CameraMatte {
public:
    /// `recordings` must outlive this.
    RecordedMatte(ProjectPackage package, RecordingFrames& recordings);

    std::shared_ptr<Image const> matte(ShownSource const& camera, VideoFrame const& picture) override;
    void retry() override;

private:
    std::string const& movieBeside(std::string_view camera);

    ProjectPackage package_;
    RecordingFrames& recordings_;
    FrameConverter converter_;
    std::optional<std::string> camera_; // that `movie_` was looked for beside
    std::string movie_;                 // empty where there is none
    VideoFrame shown_;                  // that `latest_` was made from
    std::shared_ptr<Image const> latest_;
};

}
