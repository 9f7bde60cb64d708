#pragma once

#include <Tavaro/Model/Jobs/Job.h>
#include <Tavaro/Model/Making/TakeProject.h>

#include <TavaroCapture/Recorder/ScreenRecorder.h>

#include <chrono>
#include <memory>
#include <string>

namespace tavaro {

/// Whether a remark tells of recordings that nobody finished.
enum class UnfinishedOffer { told, shownElsewhere };

/// What is to be recorded, and what becomes of it.
struct RecordingRequest {
    RecorderOptions recorder;
    int countdown = 0;  // whole seconds before the take begins
    double seconds = 0; // the take ends after that long, without the countdown; 0: when somebody ends it
    TakeProject project;
    UnfinishedOffer unfinished = UnfinishedOffer::told;
    /// After the countdown, for the recorder's own windows to leave what is filmed.
    std::chrono::milliseconds clearing{0};
    std::string startedBy = {}; // an agent or a command, by its name; empty: the user, at the recorder
};

enum class RecordingStage {
    asking, // the user, what to share
    countdown,
    recording,
    joining, // the take's segments into its movie
    saving,  // the project, with its first edit
};

struct RecordingProgress {
    RecordingStage stage = RecordingStage::countdown;
    RecorderProgress take = {};
    int countdown = 0; // whole seconds left of it
};

enum class TakeEnd { keep, discard };

/// One recording, from the request to the saved project with its first edit. What cannot be recorded fails before the
/// countdown. Remarks tell first of recordings that nobody finished, where that is asked for, and of a take that ends
/// by itself, which is saved with what there is, why. Fails with `CaptureError`, `FileError` and `MediaError`, and with
/// `JobCancelled` for a take that was not kept.
class RecordingJob : public Job<MadeTake, RecordingProgress> {
public:
    RecordingJob(MainQueue& queue, RecordingRequest request);

    void setPaused(bool isPaused);
    /// Ends the take: its project is then made, or its working folder removed; in the countdown there is none to keep.
    /// The first call counts; `cancel` and going away do neither: what was recorded is then an unfinished recording, to
    /// be recovered.
    void end(TakeEnd end);

private:
    struct Orders;

    RecordingJob(MainQueue& queue, RecordingRequest request, std::shared_ptr<Orders> orders);

    std::shared_ptr<Orders> orders_; // shared with the job's thread
};

}
