#include <Tavaro/Model/Recording/RecordingJob.h>

#include <Tavaro/Model/Privacy/DueScan.h>
#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Recording/Private/PictureWatch.h>
#include <Tavaro/Model/Recording/Private/RoomWatch.h>
#include <Tavaro/Model/Recording/Private/SoundWatch.h>
#include <Tavaro/Model/Recording/TakeNames.h>
#include <Tavaro/Model/Recording/UnfinishedRecording.h>

#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroCore/Export/ExportFile.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <ctime>
#include <mutex>
#include <optional>

namespace tavaro {

namespace fs = std::filesystem;

/// What those who started the recording want of it next.
struct RecordingJob::Orders {
    std::mutex mutex;
    bool isPaused = false;
    std::optional<TakeEnd> end;
    std::condition_variable ended;

    /// True as soon as somebody ended the take, false when the time has come.
    bool waitForEnd(std::chrono::steady_clock::time_point until) {
        std::unique_lock lock(mutex);
        return ended.wait_until(lock, until, [&] { return end.has_value(); });
    }
    bool wantsPause() {
        std::lock_guard const lock(mutex);
        return isPaused;
    }
    std::optional<TakeEnd> wantedEnd() {
        std::lock_guard const lock(mutex);
        return end;
    }
};

namespace {

using Reporter = JobReporter<RecordingProgress>;

constexpr char const* cancelled = "The recording was cancelled. `tavaro recover last` brings back what there is of it.";
constexpr char const* discarded = "The recording was discarded.";

/// What cannot be recorded fails here, before the countdown; the user may be asked what to share.
template<class Orders>
void prepare(ScreenRecorder& recorder, RecordingRequest const& request, Orders& orders, Reporter& reporter) {
    if (request.countdown <= 0 && !recorder.asksUser()) return;
    auto const asks = [&] { reporter.progress({.stage = RecordingStage::asking, .countdown = request.countdown}); };
    auto const isGivenUp = [&] { return orders.wantedEnd().has_value() || reporter.isCancelled(); };
    try {
        recorder.prepare({.begins = asks, .isGivenUp = isGivenUp});
    } catch (CaptureError const&) {
        if (isGivenUp()) throw JobCancelled(discarded);
        throw;
    }
    for (auto const& limit : recorder.limits()) reporter.remark(limit);
}

/// Until the take is due.
template<class Orders> void countDown(RecordingRequest const& request, Orders& orders, Reporter& reporter) {
    if (request.countdown <= 0) return;
    auto const due = std::chrono::steady_clock::now() + std::chrono::seconds(request.countdown);
    for (int left = request.countdown; left > 0; --left) {
        reporter.progress({.stage = RecordingStage::countdown, .countdown = left});
        if (orders.waitForEnd(due - std::chrono::seconds(left - 1))) throw JobCancelled(discarded);
        reporter.stopIfCancelled("The recording was cancelled before it began.");
    }
}

/// Windows go once they hear that nothing is left of the countdown.
template<class Orders> void letClear(RecordingRequest const& request, Orders& orders, Reporter& reporter) {
    if (request.clearing <= request.clearing.zero()) return;
    reporter.progress({.stage = RecordingStage::countdown});
    if (orders.waitForEnd(std::chrono::steady_clock::now() + request.clearing)) throw JobCancelled(discarded);
}

/// Until the time is over, somebody ends the take, or it ends by itself.
template<class Orders> TakeEnd runTake(ScreenRecorder& recorder, double seconds, Orders& orders, Reporter& reporter) {
    using namespace std::chrono_literals;
    bool isPaused = false;
    SoundWatch sounds;
    PictureWatch screen(StreamRole::screen), camera(StreamRole::camera);
    RoomWatch room;
    auto const tell = [&](std::string const& sentence) { reporter.remark(sentence); };
    while (true) {
        reporter.stopIfCancelled(cancelled);
        if (auto const end = orders.wantedEnd()) return *end;
        if (bool const wanted = orders.wantsPause(); wanted != isPaused) recorder.setPaused(isPaused = wanted);
        auto const progress = recorder.progress();
        reporter.progress({RecordingStage::recording, progress});
        sounds.look(progress.sounds, tell);
        if (auto const sentence = screen.look(progress.isScreenAway)) tell(*sentence);
        if (auto const sentence = camera.look(progress.isCameraAway)) tell(*sentence);
        room.look(progress.roomSeconds, tell);
        if (seconds > 0 && progress.seconds >= seconds) return TakeEnd::keep;
        auto const left = std::chrono::duration<double>(seconds > 0 ? seconds - progress.seconds : 1);
        auto const next = std::min<std::chrono::milliseconds>(20ms, std::chrono::ceil<std::chrono::milliseconds>(left));
        if (recorder.waitForEnd(next)) return TakeEnd::keep;
    }
}

/// For who recovers the take, if need be.
void noteScan(fs::path const& workingFolder, Reporter& reporter) {
    try {
        DueScan::note(workingFolder);
    } catch (Error const& failure) {
        reporter.remark(failure.what());
    }
}

template<class Orders> MadeTake record(RecordingRequest const& request, Orders& orders, Reporter& reporter) {
    if (request.unfinished == UnfinishedOffer::told)
        if (auto const offer = unfinishedOffer()) reporter.remark(*offer);
    auto project = request.project;
    if (project.package.empty()) project.package = unsavedPackagePath(recordingName(std::time(nullptr)));
    auto const wanted = project.package;
    if (project.nameTaken == NameTaken::isNumbered) project.package = unusedFile(wanted);
    expectPlaceFor(project.package);
    for (auto const& problem : RecoveryStore::pruneOldRecordings().problems) reporter.remark(problem);
    auto options = request.recorder;
    options.projectFolder = fs::absolute(project.package).parent_path();
    ScreenRecorder recorder(options);
    prepare(recorder, request, orders, reporter);
    countDown(request, orders, reporter);
    letClear(request, orders, reporter);
    recorder.start();
    if (project.isScanDue) noteScan(recorder.workingFolder(), reporter);
    if (runTake(recorder, request.seconds, orders, reporter) == TakeEnd::discard) {
        recorder.cancel();
        throw JobCancelled(discarded);
    }
    reporter.progress({RecordingStage::joining, recorder.progress()});
    auto const take = recorder.stop();
    if (take.endedEarly) reporter.remark(*take.endedEarly);
    reporter.progress({RecordingStage::saving, recorder.progress()});
    if (project.nameTaken == NameTaken::isNumbered) project.package = unusedFile(wanted);
    auto made = makeTakeProject({take.movie, take.metadata, take.duration, take.streams, take.warnings}, project,
                                [&](std::string const& sentence) { reporter.remark(sentence); });
    made.endedEarly = take.endedEarly;
    if (!recorder.limits().empty()) made.made.limits = recorder.limits();
    return made;
}

}

RecordingJob::RecordingJob(MainQueue& queue, RecordingRequest request)
    : RecordingJob(queue, std::move(request), std::make_shared<Orders>()) {}

RecordingJob::RecordingJob(MainQueue& queue, RecordingRequest request, std::shared_ptr<Orders> orders)
    : Job(queue, "com.tavaro.job.record",
          [request = std::move(request), orders](Reporter& reporter) { return record(request, *orders, reporter); })
    , orders_(std::move(orders)) {}

void RecordingJob::setPaused(bool isPaused) {
    std::lock_guard const lock(orders_->mutex);
    orders_->isPaused = isPaused;
}

void RecordingJob::end(TakeEnd end) {
    std::lock_guard const lock(orders_->mutex);
    if (!orders_->end) orders_->end = end;
    orders_->ended.notify_all();
}

}
