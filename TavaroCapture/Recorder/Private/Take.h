#pragma once

#include <TavaroCapture/Events/Private/EventRecorder.h>
#include <TavaroCapture/Events/Private/TakeClock.h>
#include <TavaroCapture/Recorder/Private/Absences.h>
#include <TavaroCapture/Recorder/Private/MemoryPressure.h>
#include <TavaroCapture/Recorder/Private/ScreenPictures.h>
#include <TavaroCapture/Recorder/Private/SideStream.h>
#include <TavaroCapture/Recorder/Private/TakeRoom.h>
#include <TavaroCapture/Recorder/Private/TakeSources.h>
#include <TavaroCapture/Recorder/ScreenRecorder.h>
#include <TavaroCapture/Recovery/Private/MetadataCheckpoints.h>
#include <TavaroCapture/Recovery/Private/WorkingFolderClaim.h>
#include <TavaroCapture/Segments/Private/SegmentWriter.h>
#include <TavaroCapture/Segments/Private/StreamSync.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>

namespace tavaro {

/// A take from its first frame to its joined streams. Who owns what:
/// - the screen queue: the screen; 60 times a second it grabs, converts, and hands a frame on;
/// - the sample queue: appending to the writer, the event log;
/// - the checkpoint queue: the checkpoint files;
/// - the disk queue: waiting until what was written is on the disk, and how much room that has;
/// - the streams beside the screen: threads of their own;
/// - any thread: the clock, `lastIndex` and the counters (atomic), `ending` and the last progress (their lock).
/// Frames go from the screen to the sample queue through a short line, `framesUnderWay`; when the encoder falls behind
/// and the line is full, a frame is dropped and counted, and memory stays bounded.
class ScreenRecorder::Take {
public:
    Take(RecorderOptions const& options, TakeSources sources);
    ~Take();

    void start();
    void setPaused(bool paused);
    RecorderProgress progress() const;
    Size2 captureSize() const { return size_; }
    std::filesystem::path const& directory() const { return directory_; }
    bool waitForEnd(std::chrono::milliseconds atMost);
    FinishedTake finish();
    void cancel();

private:
    /// Frames that may wait for the encoder: half a second of 1080p, less of anything larger.
    static constexpr std::int64_t mostBytesUnderWay = 96 << 20;

    struct Ending {
        CaptureError::Kind kind;
        std::string sentence;
    };

    void prepareFolder();
    void prepareStreams(TakeSources& sources);
    void prepareCamera(std::unique_ptr<CameraSource> source, SideStreamOptions const& options);
    void startSideStreams();
    void startTicks(double mediaTime);
    void resumeTicks();
    void keepOnDisk();
    void lookAtRoom();
    std::int64_t indexAt(double time) const;
    void tick(double scheduled);
    void noteStall(std::int64_t from, std::int64_t to);
    void handOn(double time, bool isRepeated);
    void append(EncoderPicture picture, double time, bool isRepeated);
    void keepUp();
    void endEarly(Ending ending);
    std::optional<Ending> ending() const;
    void stopStreams();
    void stopScreen();
    void holdLastPicture(double end);
    bool isScreenAway() const;
    void finishSegments();
    void joinInto(FinishedTake& result);
    RecorderProgress progressNow() const;
    void end();
    void release();
    std::vector<double> interruptedAt() const;
    CaptureHealth health() const;
    MetadataCheckpoints::Snapshot snapshot(EventCounts const& after);

    RecorderOptions const options_;
    UUID const recordingID_ = UUID::random();
    std::filesystem::path directory_;
    std::optional<WorkingFolderClaim> claim_;
    TakeClock clock_;

    std::unique_ptr<ScreenSource> screen_;
    std::optional<ScreenPictures> screenPictures_; // the screen queue's
    Size2 size_;
    int mostFramesUnderWay_ = 0;
    double scaleFactor_ = 1;
    std::atomic<std::int64_t> lastIndex_ = -1; // of the frame that was asked for last; the screen queue writes it
    std::atomic<bool> isGivenUp_ = false;      // the screen, which does not answer

    std::shared_ptr<TakeManifest> manifest_;
    std::unique_ptr<SegmentWriter> writer_;
    std::atomic<int> framesUnderWay_ = 0;
    std::atomic<std::int64_t> droppedFrames_ = 0;
    std::atomic<std::int64_t> repeatedFrames_ = 0;
    bool isStopped_ = false;

    std::mutex mutable endingLock_;
    std::condition_variable endingChanged_;
    std::optional<Ending> ending_;         // by itself
    std::optional<RecorderProgress> last_; // once the take was stopped
    std::atomic<bool> isEnding_ = false;

    // The order matters: what is declared later uses what is declared earlier, and ends first.
    SerialQueue sampleQueue_{"com.tavaro.capture.samples"};
    std::unique_ptr<EventRecorder> events_;
    std::vector<std::unique_ptr<SideStream>> sideStreams_;
    std::vector<std::string> sideFailures_; // sentences
    std::vector<double> interruptedAt_;     // seconds of the take; of the streams that are finished
    Absences screenStalls_;
    Absences screenAbsences_;
    std::shared_ptr<LevelLog> micLevels_ = std::make_shared<LevelLog>();
    std::unique_ptr<MetadataCheckpoints> checkpoints_;
    std::unique_ptr<StreamSync> streamSync_; // the disk queue's, as the room
    std::optional<TakeRoom> room_;
    MemoryPressure memory_;
    std::int64_t syncs_ = 0;
    SerialQueue diskQueue_{"com.tavaro.capture.disk"};
    SerialQueue screenQueue_{"com.tavaro.capture.screen", SerialQueue::Urgency::prompt};
};

}
