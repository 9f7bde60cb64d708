#pragma once

#include <Tavaro/Model/Jobs/Job.h>
#include <Tavaro/Model/Making/TakeProject.h>

#include <TavaroCapture/Recorder/ScreenRecorder.h>

#include <memory>

namespace tavaro {

/// What is to be recorded, and what becomes of it.
struct RecordingRequest {
    RecorderOptions recorder;
    double seconds = 0; // the take ends after that long; 0: when somebody ends it
    TakeProject project;
};

enum class RecordingStage { recording, saving };

struct RecordingProgress {
    RecordingStage stage = RecordingStage::recording;
    RecorderProgress take;
};

enum class TakeEnd { keep, discard };

/// One recording, from the request to the saved project with its first edit. A take that ends by itself is saved with
/// what there is, and a remark says why. Fails with `CaptureError`, `FileError` and `MediaError`, and with
/// `JobCancelled` for a take that was not kept.
class RecordingJob : public Job<MadeTake, RecordingProgress> {
public:
    RecordingJob(MainQueue& queue, RecordingRequest request);

    void setPaused(bool isPaused);
    /// Ends the take: its project is then made, or its working folder removed. The first call counts; `cancel` and
    /// going away do neither: what was recorded is then an unfinished recording, to be recovered.
    void end(TakeEnd end);

private:
    struct Orders;

    RecordingJob(MainQueue& queue, RecordingRequest request, std::shared_ptr<Orders> orders);

    std::shared_ptr<Orders> orders_; // shared with the job's thread
};

}
