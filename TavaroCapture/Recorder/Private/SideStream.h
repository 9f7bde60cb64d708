#pragma once

#include <TavaroCapture/Segments/Private/TakeManifest.h>
#include <TavaroCapture/Sound/Private/LevelLog.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>
#include <TavaroCapture/Sources/Private/SoundSource.h>
#include <TavaroCapture/Sources/SoundState.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

class TakeClock;

/// A stream that is recorded beside the screen. Its source and the encoder work on threads of their own, so the screen
/// never waits for it; when it is lost or cannot be written, the take goes on without the rest of it.
/// `start`, `stop` and `finish` belong to one thread.
class SideStream {
public:
    virtual ~SideStream() = default;
    virtual void start() = 0;
    /// Ends the source, and lets what is under way arrive.
    virtual void stop() = 0;
    /// After `stop`: completes the files. Returns sentences: what of the stream is missing.
    virtual std::vector<std::string> finish() = 0;
    /// Any thread. Seconds of the take at which its device went away; none of one that has not given anything yet.
    virtual std::vector<double> interruptedAt() const = 0;
    /// Any thread. None of pictures.
    virtual std::optional<SoundState> sound() const { return std::nullopt; }
    /// Any thread. Whether this is a camera that gives no pictures now.
    virtual bool isCameraAway() const { return false; }
};

struct SideStreamOptions {
    std::shared_ptr<TakeManifest> manifest;
    StreamRole role = StreamRole::camera;
    double segmentSeconds = 10;
    std::shared_ptr<LevelLog> levels = std::make_shared<LevelLog>(); // of a sound
};

/// `clock` must outlive the stream.
std::unique_ptr<SideStream> recordCamera(std::unique_ptr<CameraSource> source, TakeClock const& clock,
                                         SideStreamOptions const& options);
std::unique_ptr<SideStream> recordSound(std::unique_ptr<SoundSource> source, TakeClock const& clock,
                                        SideStreamOptions const& options);

}
