#pragma once

#include <TavaroCapture/Segments/TakeStream.h>
#include <TavaroCapture/Sources/Asking.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCapture/Sources/Chord.h>
#include <TavaroCapture/Sources/KeyLogging.h>
#include <TavaroCapture/Sources/SoundState.h>
#include <TavaroCore/Recording/RecordingMetadata.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

struct TakeSources;

struct RecorderOptions {
    CaptureSource source = DisplaySource{};
    std::string display; // X server to record; empty means this desktop: `$DISPLAY`, or what a Wayland one shares
    int fps = 60;        // 1…120
    KeyLogging keys = KeyLogging::all;
    std::vector<Chord> ownShortcuts;              // that work the recorder; never logged
    std::optional<MicrophoneSource> microphone;   // none: not recorded
    std::optional<SystemSoundSource> systemSound; // none: not recorded
    std::optional<CameraDeviceSource> camera;     // none: not recorded
    std::string soundServer;                      // as in `$PULSE_SERVER`; empty means that, or the session's own
    std::filesystem::path recordingsFolder; // where the working folder is made; empty means `folders::recordings()`
    std::filesystem::path projectFolder;    // where the take's project will be made, as far as that is known: its disk
                                            // needs room, too
    double segmentSeconds = 10;
    double checkpointSeconds = 0.5;
};

/// A take so far, for a progress line.
struct RecorderProgress {
    double seconds = 0; // on the take's timeline: pauses do not count
    std::int64_t framesWritten = 0;
    std::int64_t droppedFrames = 0;  // frames that could not be taken or written in time
    std::int64_t repeatedFrames = 0; // of those written, how many stand for an unchanged screen
    bool isPaused = false;
    std::optional<double> roomSeconds; // that its disks have room for; none before that can be told
    std::vector<SoundState> sounds;    // those that are recorded
    bool isScreenAway = false;         // it is not there, or has given no pictures for a second
    bool isCameraAway = false;         // one that is recorded gives no pictures
};

/// A take that is over: one movie, and the log of what happened in it.
struct FinishedTake {
    UUID recordingID;
    std::filesystem::path directory;       // the working folder; `RecoveryStore::removeWorkingDirectory` clears it
    std::filesystem::path movie;           // in the working folder; H.264, a frame for each slot of the rate
    double duration = 0;                   // seconds
    std::vector<TakeStream> streams;       // beside the screen
    RecordingMetadata metadata;            // with its honest `health`
    std::vector<std::string> warnings;     // sentences: what of the streams beside the screen is missing
    std::optional<std::string> endedEarly; // why the take ended by itself, as a sentence; none when `stop` ended it
};

/// Records one take: the screen and what is recorded beside it into segments, what the user does into the metadata.
///
///     ScreenRecorder recorder({.source = DisplaySource{}});
///     recorder.start();
///     while (!interrupted && !recorder.waitForEnd(100ms)) show(recorder.progress());
///     FinishedTake take = recorder.stop();
///
/// One take an object. `start`, `setPaused`, `stop`, `cancel` belong to one thread; the rest to any, also while the
/// take is being stopped: it then has its last progress. A process that dies in the middle leaves a working folder that
/// `RecoveryStore` brings back; so does destroying the recorder without `stop`.
class ScreenRecorder {
public:
    explicit ScreenRecorder(RecorderOptions options);
    /// Records these sources, whatever the options say of theirs.
    ScreenRecorder(RecorderOptions options, TakeSources sources);
    ~ScreenRecorder();
    ScreenRecorder(ScreenRecorder const&) = delete;
    ScreenRecorder& operator=(ScreenRecorder const&) = delete;

    /// Throws what `start` would throw now, and records nothing: for who waits before a take begins. A desktop that
    /// asks the user what to share does so here, and `start` records the answer.
    void prepare(Asking const& asking = {});
    /// Whether `start` or `prepare` will ask, unless they throw first.
    bool asksUser() const;
    /// After `prepare`, as sentences: what the desktop does not tell of what the user does, so the log will lack it.
    std::vector<std::string> const& limits() const { return limits_; }
    /// Returns when the first frame's time has come: once the sounds that are wanted come in, for which it waits two
    /// seconds each at most. Throws `CaptureError`: no display, a source that is missing, empty or off-screen, no such
    /// microphone or camera, no sound server, a folder that cannot be written.
    void start();
    void setPaused(bool paused);
    /// Throws `CaptureError` before `start`.
    RecorderProgress progress() const;
    /// The working folder, from `start` on. Throws `CaptureError` before.
    std::filesystem::path workingFolder() const;
    /// Size of the movie: the source's, each side rounded down to even.
    Size2 captureSize() const;

    /// Waits until the take ends or the time is over; true when it ended: by itself (display gone, window closed, disk
    /// full), where `stop` is still due and hands back what was recorded, or stopped.
    bool waitForEnd(std::chrono::milliseconds atMost);

    /// Ends the take and joins its segments. The take counts as unfinished until its movie is safe elsewhere and
    /// `RecoveryStore` is told so. Throws `CaptureError`: not recording, or the movie could not be joined;
    /// what was recorded then stays in the working folder, for recovery.
    FinishedTake stop();
    /// Ends the take and removes its working folder.
    void cancel();

private:
    class Take;
    std::shared_ptr<Take> take() const;
    Take& inProgress() const;

    RecorderOptions options_;
    std::unique_ptr<TakeSources> sources_;
    std::vector<std::string> limits_;
    std::mutex mutable lock_;
    std::shared_ptr<Take> take_; // guarded by lock_; kept when the take is over
    bool isOver_ = false;
};

}
