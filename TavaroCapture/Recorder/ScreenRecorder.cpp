#include <TavaroCapture/Recorder/ScreenRecorder.h>

#include <TavaroCapture/Recorder/Private/Take.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

void requireSound(RecorderOptions const& options) {
    if (options.fps < 1 || options.fps > 120)
        throw CaptureError(CaptureError::Kind::badSource,
                           fmt::format("A recording has 1 to 120 frames a second; {} cannot be.", options.fps));
    if (!(options.segmentSeconds > 0) || !(options.checkpointSeconds > 0))
        throw CaptureError(CaptureError::Kind::badSource, "Segments and checkpoints need a length above 0 seconds.");
}

}

ScreenRecorder::ScreenRecorder(RecorderOptions options) : options_(std::move(options)) {}
ScreenRecorder::~ScreenRecorder() = default;

void ScreenRecorder::start() {
    if (take_) throw CaptureError(CaptureError::Kind::notRecording, "This recorder has already recorded its take.");
    requireSound(options_);
    auto take = std::make_unique<Take>(options_);
    take->start();
    take_ = std::move(take);
}

namespace {

template<class T> T& inProgress(std::unique_ptr<T> const& take) {
    if (!take) throw CaptureError(CaptureError::Kind::notRecording, "There is no recording in progress.");
    return *take;
}

}

void ScreenRecorder::setPaused(bool paused) { inProgress(take_).setPaused(paused); }
RecorderProgress ScreenRecorder::progress() const { return inProgress(take_).progress(); }
Size2 ScreenRecorder::captureSize() const { return inProgress(take_).captureSize(); }
bool ScreenRecorder::waitForEnd(std::chrono::milliseconds atMost) { return inProgress(take_).waitForEnd(atMost); }

FinishedTake ScreenRecorder::stop() {
    auto result = inProgress(take_).finish();
    take_.reset();
    return result;
}

void ScreenRecorder::cancel() {
    inProgress(take_).cancel();
    take_.reset();
}

}
