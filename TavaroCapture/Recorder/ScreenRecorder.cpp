#include <TavaroCapture/Recorder/ScreenRecorder.h>

#include <TavaroCapture/Devices/Private/OpenSources.h>
#include <TavaroCapture/Recorder/Private/RecordingsFolder.h>
#include <TavaroCapture/Recorder/Private/Take.h>
#include <TavaroCapture/Recorder/Private/TakeRoom.h>

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

bool isAsked(RecorderOptions const& options) { return desktopAccess(options.display) == DesktopAccess::asked; }

TakeSources openSources(RecorderOptions const& options, Asking const& asking = {}) {
    TakeSources result;
    if (!isAsked(options)) {
        result.screen = openScreen(options.source, options.display);
        result.events = openEvents(options.display, {options.keys, options.ownShortcuts});
    }
    if (options.camera) result.camera = openCamera(*options.camera);
    if (options.microphone) result.microphone = openMicrophone(*options.microphone, options.soundServer);
    if (options.systemSound) result.systemSound = openSystemSound(*options.systemSound, options.soundServer);
    if (!isAsked(options)) return result;
    // Last: the user is asked for a take that nothing else stands in the way of.
    auto shared = openSharedDesktop({options.source, options.fps, {options.keys, options.ownShortcuts}}, asking);
    result.screen = std::move(shared.screen);
    result.events = std::move(shared.events);
    return result;
}

}

ScreenRecorder::ScreenRecorder(RecorderOptions options) : options_(std::move(options)) {}
ScreenRecorder::ScreenRecorder(RecorderOptions options, TakeSources sources)
    : options_(std::move(options))
    , sources_(std::make_unique<TakeSources>(std::move(sources))) {}
ScreenRecorder::~ScreenRecorder() = default;

bool ScreenRecorder::asksUser() const { return !sources_ && isAsked(options_); }

void ScreenRecorder::prepare(Asking const& asking) {
    requireSound(options_);
    if (take() || sources_) return;
    recordingsFolderFor(options_.recordingsFolder);
    expectRoomFor(options_.projectFolder);
    auto sources = openSources(options_, asking);
    limits_ = sources.events->limits();
    if (asksUser()) sources_ = std::make_unique<TakeSources>(std::move(sources));
}

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

std::filesystem::path ScreenRecorder::workingFolder() const {
    auto const shared = take();
    if (!shared) failNotRecording();
    return shared->directory();
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
