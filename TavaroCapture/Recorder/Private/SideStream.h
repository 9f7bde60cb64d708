#pragma once

#include <TavaroCapture/Segments/Private/TakeManifest.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>
#include <TavaroCapture/Sources/Private/SoundSource.h>

#include <memory>
#include <optional>
#include <string>

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
    /// After `stop`: completes the files. The sentence of what ended the stream before its time; none when nothing did.
    virtual std::optional<std::string> finish() = 0;
};

struct SideStreamOptions {
    std::shared_ptr<TakeManifest> manifest;
    StreamRole role = StreamRole::camera;
    double segmentSeconds = 10;
};

/// `clock` must outlive the stream.
std::unique_ptr<SideStream> recordCamera(std::unique_ptr<CameraSource> source, TakeClock const& clock,
                                         SideStreamOptions const& options);
std::unique_ptr<SideStream> recordSound(std::unique_ptr<SoundSource> source, TakeClock const& clock,
                                        SideStreamOptions const& options);

}
