#include <TavaroCapture/Recorder/ScreenRecorder.h>

#include <TavaroCapture/Devices/Private/OpenSources.h>
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

TakeSources openSources(RecorderOptions const& options) {
    TakeSources result;
    result.screen = openScreen(options.source, options.display);
    result.events = openEvents(options.display, options.keys);
    if (options.camera) result.camera = openCamera(*options.camera);
    if (options.microphone) result.microphone = openMicrophone(*options.microphone, options.soundServer);
    if (options.systemSound) result.systemSound = openSystemSound(*options.systemSound, options.soundServer);
    return result;
}

}

void expectRecordable(RecorderOptions const& options) {
    requireSound(options);
    openSources(options);
}

ScreenRecorder::ScreenRecorder(RecorderOptions options) : options_(std::move(options)) {}
ScreenRecorder::ScreenRecorder(RecorderOptions options, TakeSources sources)
    : options_(std::move(options))
    , sources_(std::make_unique<TakeSources>(std::move(sources))) {}
ScreenRecorder::~ScreenRecorder() = default;

void ScreenRecorder::start() {
    if (take()) throw CaptureError(CaptureError::Kind::notRecording, "This recorder has already recorded its take.");
    requireSound(options_);
    auto const started = std::make_shared<Take>(options_, sources_ ? std::move(*sources_) : openSources(options_));
    started->start();
    std::lock_guard const guard(lock_);
    take_ = started;
}

std::shared_ptr<ScreenRecorder::Take> ScreenRecorder::take() const {
    std::lock_guard const guard(lock_);
    return take_;
}

namespace {

[[noreturn]] void failNotRecording() {
    throw CaptureError(CaptureError::Kind::notRecording, "There is no recording in progress.");
}

}

/// For the thread that starts and stops the take.
ScreenRecorder::Take& ScreenRecorder::inProgress() const {
    if (!take_ || isOver_) failNotRecording();
    return *take_;
}

void ScreenRecorder::setPaused(bool paused) { inProgress().setPaused(paused); }

RecorderProgress ScreenRecorder::progress() const {
    auto const shared = take();
    if (!shared) failNotRecording();
    return shared->progress();
}

Size2 ScreenRecorder::captureSize() const {
    auto const shared = take();
    if (!shared) failNotRecording();
    return shared->captureSize();
}

bool ScreenRecorder::waitForEnd(std::chrono::milliseconds atMost) {
    auto const shared = take();
    if (!shared) failNotRecording();
    return shared->waitForEnd(atMost);
}

FinishedTake ScreenRecorder::stop() {
    auto result = inProgress().finish();
    isOver_ = true;
    return result;
}

void ScreenRecorder::cancel() {
    inProgress().cancel();
    isOver_ = true;
}

}
