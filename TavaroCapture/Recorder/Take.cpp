#include <TavaroCapture/Recorder/Private/Take.h>

#include <TavaroCapture/Recorder/Private/RecordingsFolder.h>
#include <TavaroCapture/Recovery/Private/WorkingFolderRemoval.h>
#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroCapture/Segments/Private/JoinStreams.h>
#include <TavaroCapture/Segments/Private/StreamSegments.h>
#include <TavaroCapture/Sources/Private/Patience.h>
#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Recording/SettledRecording.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <spdlog/spdlog.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// With fragments of half a second, and the time that a disk takes, less than a second can be lost.
constexpr double syncSeconds = 0.25;

}

ScreenRecorder::Take::Take(RecorderOptions const& options, TakeSources sources) : options_(options) {
    screen_ = std::move(sources.screen);
    size_ = screen_->size();
    scaleFactor_ = screen_->scaleFactor();
    screenPictures_.emplace(static_cast<int>(size_.width), static_cast<int>(size_.height));
    auto const pictureBytes = size_.width * size_.height * 3 / 2;
    mostFramesUnderWay_ = static_cast<int>(std::clamp<std::int64_t>(mostBytesUnderWay / pictureBytes, 4, options_.fps));
    events_ = std::make_unique<EventRecorder>(std::move(sources.events), screen_->frame(), clock_, sampleQueue_);
    prepareFolder();
    try {
        prepareStreams(sources);
    } catch (Error const& failure) {
        sideStreams_.clear();
        writer_.reset();
        removeWorkingFolder(directory_);
        if (dynamic_cast<CaptureError const*>(&failure)) throw;
        throw CaptureError(CaptureError::Kind::writeFailed, failure.what());
    }
}

ScreenRecorder::Take::~Take() {
    stopStreams();
    // Without finish() the marker stays, and the segments make a take to be recovered.
}

void ScreenRecorder::Take::prepareFolder() {
    directory_ = recordingsFolderFor(options_.recordingsFolder) / recordingID_.text();
    expectRoomFor(options_.projectFolder);
    std::error_code error;
    fs::create_directories(directory_, error);
    // What was on the screen and which keys were pressed is for nobody else, whatever file of it is made.
    if (!error) fs::permissions(directory_, fs::perms::owner_all, error);
    if (!error) claim_ = WorkingFolderClaim::take(directory_);
    if (error || !claim_)
        throw CaptureError(CaptureError::Kind::writeFailed,
                           fmt::format("Could not write the recording: “{}” cannot be made{}.", directory_.string(),
                                       error ? " (" + systemReason(error.value()) + ")" : ""));
    FileDescriptor::syncFolderOf(directory_);
    room_.emplace(directory_, options_.projectFolder);
    lookAtRoom();
}

/// The writers of all streams, and the marker of a take in progress.
void ScreenRecorder::Take::prepareStreams(TakeSources& sources) {
    manifest_ = std::make_shared<TakeManifest>(directory_, recordingID_);
    writer_ = std::make_unique<SegmentWriter>(SegmentWriter::Options{.manifest = manifest_,
                                                                     .width = static_cast<int>(size_.width),
                                                                     .height = static_cast<int>(size_.height),
                                                                     .fps = options_.fps,
                                                                     .segmentDuration = options_.segmentSeconds});
    auto const options = [&](StreamRole role) { return SideStreamOptions{manifest_, role, options_.segmentSeconds}; };
    if (sources.camera) prepareCamera(std::move(sources.camera), options(StreamRole::camera));
    if (sources.microphone) {
        auto microphone = options(StreamRole::microphone);
        microphone.levels = micLevels_;
        sideStreams_.push_back(recordSound(std::move(sources.microphone), clock_, microphone));
    }
    if (sources.systemSound)
        sideStreams_.push_back(recordSound(std::move(sources.systemSound), clock_, options(StreamRole::systemSound)));
    writer_->prepare();
    RecoveryStore::markInProgress(directory_, recordingID_, std::string(recordingMode(options_.source)));
}

/// A camera whose pictures cannot be encoded costs only itself, as one that cannot start does.
void ScreenRecorder::Take::prepareCamera(std::unique_ptr<CameraSource> source, SideStreamOptions const& options) {
    try {
        sideStreams_.push_back(recordCamera(std::move(source), clock_, options));
    } catch (Error const& failure) {
        sideFailures_.push_back(fmt::format("The {} is not recorded. {}", spokenName(options.role), failure.what()));
    }
}

/// What is beside the screen comes first, since devices take their time to begin. The first frame is taken now.
void ScreenRecorder::Take::start() {
    startSideStreams();
    double const now = mediaClockNow();
    clock_.start(now - 0.5 / options_.fps);
    events_->start();
    checkpoints_ = std::make_unique<MetadataCheckpoints>(directory_, options_.checkpointSeconds,
                                                         [this](EventCounts const& after) { return snapshot(after); });
    streamSync_ = std::make_unique<StreamSync>(manifest_);
    diskQueue_.startTimer(now + syncSeconds, syncSeconds, [this](double) { keepOnDisk(); });
    startTicks(now);
    screenQueue_.sync([] {}); // the first tick is due now, so even the shortest take has a frame
}

/// A camera or microphone that cannot start costs only itself, as one that is lost later does.
void ScreenRecorder::Take::startSideStreams() {
    std::erase_if(sideStreams_, [&](auto const& stream) {
        try {
            stream->start();
            return false;
        } catch (Error const& failure) {
            sideFailures_.emplace_back(failure.what());
            return true;
        }
    });
}

void ScreenRecorder::Take::startTicks(double mediaTime) {
    screenQueue_.startTimer(mediaTime, 1.0 / options_.fps, [this](double scheduled) { tick(scheduled); });
}

void ScreenRecorder::Take::keepOnDisk() {
    streamSync_->sync();
    constexpr int looksEvery = 4;
    if (++syncs_ % looksEvery == 0) {
        lookAtRoom();
        memory_.look();
    }
    auto const full = isEnding_ ? std::nullopt : room_->usedUp();
    if (!full) return;
    endEarly({CaptureError::Kind::diskFull,
              fmt::format("The disk of “{}” is nearly full. The take was ended while there was room to save it.",
                          full->string())});
}

void ScreenRecorder::Take::lookAtRoom() {
    std::uintmax_t const written = streamSync_ ? streamSync_->written() + checkpoints_->written() : 0;
    if (room_->look(clock_.elapsed(mediaClockNow()), written)) return;
    endEarly({CaptureError::Kind::writeFailed,
              fmt::format("Could not write the recording: its folder “{}” was removed.", directory_.string())});
}

/// By the screen's own queue, which a display that hangs may keep for long.
void ScreenRecorder::Take::setPaused(bool paused) {
    clock_.setPaused(paused, mediaClockNow());
    screenQueue_.async([this, paused] { paused ? screenQueue_.stopTimer() : resumeTicks(); });
}

/// Frames stay on their grid: the first one is the next that the timeline has no frame for.
void ScreenRecorder::Take::resumeTicks() {
    double const elapsed = clock_.elapsed(mediaClockNow());
    auto const next = std::max(lastIndex_ + 1, static_cast<std::int64_t>(std::ceil(elapsed * options_.fps - 0.5)));
    startTicks(clock_.mediaTime((static_cast<double>(next) + 0.5) / options_.fps));
}

/// A frame is what was on the screen in the middle of the time for which it is shown, so that what changes at any
/// moment is as often shown too early as too late, and by half a frame at most.
std::int64_t ScreenRecorder::Take::indexAt(double time) const { return std::llround(time * options_.fps - 0.5); }

void ScreenRecorder::Take::tick(double scheduled) {
    if (isEnding_ || isGivenUp_ || clock_.isPaused()) return;
    // The first frame is the take's time 0, however late it comes.
    std::int64_t const index = lastIndex_ < 0 ? 0 : indexAt(clock_.elapsed(scheduled));
    if (index <= lastIndex_) return;
    std::int64_t const missed = index - lastIndex_ - 1; // because the tick before took too long
    droppedFrames_ += missed;
    if (missed >= options_.fps) noteStall(lastIndex_ + 1, index);
    lastIndex_ = index;

    auto const outcome = screen_->grab(mediaClockNow());
    if (isGivenUp_) {
        ++droppedFrames_;
        return;
    }
    screenPictures_->note(*screen_, outcome);
    if (outcome == ScreenSource::Outcome::lost)
        return endEarly({CaptureError::Kind::captureLost,
                         "What was being recorded went away: the window was closed or the display ended."});
    double const time = static_cast<double>(index) / options_.fps;
    bool const isAway = outcome == ScreenSource::Outcome::away;
    isAway ? screenAbsences_.begin(time) : screenAbsences_.end(time);
    events_->setFrame(screen_->frame());
    handOn(time, isAway || outcome == ScreenSource::Outcome::unchanged);
}

/// A second or more without a picture is more than lost frames: it is a spot to look at.
void ScreenRecorder::Take::noteStall(std::int64_t from, std::int64_t to) {
    screenStalls_.begin(static_cast<double>(from) / options_.fps);
    screenStalls_.end(static_cast<double>(to) / options_.fps);
}

void ScreenRecorder::Take::handOn(double time, bool isRepeated) {
    if (framesUnderWay_ >= mostFramesUnderWay_) {
        ++droppedFrames_;
        return;
    }
    auto const fresh = [this] { return writer_->picture(); };
    auto const picture = std::make_shared<EncoderPicture>(screenPictures_->current(screen_->picture(), fresh));
    ++framesUnderWay_;
    sampleQueue_.async([this, picture, time, isRepeated] {
        keepUp();
        append(std::move(*picture), time, isRepeated);
        --framesUnderWay_;
    });
}

/// On the sample queue. Before other programs only while frames may be lost: else the encoder would go before the
/// display's server, too, which has to draw what is recorded next.
void ScreenRecorder::Take::keepUp() {
    int const waiting = framesUnderWay_;
    if (waiting > mostFramesUnderWay_ / 3) sampleQueue_.setUrgency(SerialQueue::Urgency::raised);
    if (waiting <= 1) sampleQueue_.setUrgency(SerialQueue::Urgency::normal);
}

void ScreenRecorder::Take::append(EncoderPicture picture, double time, bool isRepeated) {
    if (isEnding_ && ending()->kind == CaptureError::Kind::writeFailed) return;
    try {
        if (writer_->append(std::move(picture), time) && isRepeated) ++repeatedFrames_;
    } catch (CaptureError const& error) {
        endEarly({error.kind, error.what()});
    }
}

void ScreenRecorder::Take::endEarly(Ending ending) {
    {
        std::lock_guard const lock(endingLock_);
        if (ending_) return;
        ending_ = std::move(ending);
        isEnding_ = true;
    }
    endingChanged_.notify_all();
}

std::optional<ScreenRecorder::Take::Ending> ScreenRecorder::Take::ending() const {
    std::lock_guard const lock(endingLock_);
    return ending_;
}

bool ScreenRecorder::Take::waitForEnd(std::chrono::milliseconds atMost) {
    std::unique_lock lock(endingLock_);
    return endingChanged_.wait_for(lock, atMost, [&] { return ending_ || last_; });
}

RecorderProgress ScreenRecorder::Take::progress() const {
    std::lock_guard const lock(endingLock_);
    return last_ ? *last_ : progressNow();
}

/// The take is over: what it had come to is what there is to tell from here on.
void ScreenRecorder::Take::end() {
    {
        std::lock_guard const lock(endingLock_);
        if (!last_) last_ = progressNow();
    }
    endingChanged_.notify_all();
}

RecorderProgress ScreenRecorder::Take::progressNow() const {
    RecorderProgress progress{.seconds = clock_.elapsed(mediaClockNow()),
                              .framesWritten = writer_->framesWritten(),
                              .droppedFrames = droppedFrames_,
                              .repeatedFrames = repeatedFrames_,
                              .isPaused = clock_.isPaused(),
                              .roomSeconds = room_->seconds(),
                              .isScreenAway = isScreenAway()};
    for (auto const& stream : sideStreams_) {
        if (auto const sound = stream->sound()) progress.sounds.push_back(*sound);
        progress.isCameraAway = progress.isCameraAway || stream->isCameraAway();
    }
    return progress;
}

bool ScreenRecorder::Take::isScreenAway() const {
    constexpr double longest = 1.25; // seconds; such a stall is one that is noted, too
    double const behind = clock_.elapsed(mediaClockNow()) * options_.fps - static_cast<double>(lastIndex_);
    return screenAbsences_.isAway() || (!isEnding_ && behind > longest * options_.fps);
}

/// What several streams suffer at nearly the same time is one event: a server that ends takes all of its devices along.
std::vector<double> ScreenRecorder::Take::interruptedAt() const {
    constexpr double together = 1; // seconds
    auto moments = interruptedAt_;
    for (auto const* const absences : {&screenStalls_, &screenAbsences_})
        std::ranges::move(absences->beginnings(), std::back_inserter(moments));
    for (auto const& stream : sideStreams_) std::ranges::move(stream->interruptedAt(), std::back_inserter(moments));
    std::ranges::sort(moments);
    std::vector<double> result;
    for (double const moment : moments)
        if (result.empty() || moment - result.back() >= together) result.push_back(moment);
    return result;
}

CaptureHealth ScreenRecorder::Take::health() const {
    CaptureHealth result;
    result.framesWritten = writer_->framesWritten();
    result.droppedFrames = droppedFrames_;
    result.writerRejectedFrames = writer_->writerRejectedFrames();
    result.repeatedFrames = repeatedFrames_;
    result.keyboardCaptured = options_.keys != KeyLogging::none && events_->keyboardCaptured();
    result.interruptedAt = interruptedAt();
    result.interruptions = std::ssize(result.interruptedAt);
    result.memoryPressureEvents = memory_.events();
    auto const early = ending();
    result.captureLost = early && early->kind == CaptureError::Kind::captureLost;
    return result;
}

/// On the checkpoint queue. Copies what came since the last seal, half a minute of events at most, while the sample
/// queue waits; everything slow happens outside it.
MetadataCheckpoints::Snapshot ScreenRecorder::Take::snapshot(EventCounts const& after) {
    MetadataCheckpoints::Snapshot result;
    sampleQueue_.sync([&] {
        result.log = events_->since(after, clock_.elapsed(mediaClockNow()));
        result.settled = events_->settled();
    });
    result.settled.micLevels = micLevels_->settled();
    result.log.micLevels = micLevels_->since(after.micLevels);
    result.log.micLevels.resize(std::min(result.log.micLevels.size(), result.settled.micLevels - after.micLevels));
    result.log.captureSize = size_;
    result.log.scaleFactor = scaleFactor_;
    result.log.health = health();
    return result;
}

void ScreenRecorder::Take::stopScreen() {
    double const end = clock_.elapsed(mediaClockNow());
    screenQueue_.async([this] { screenQueue_.stopTimer(); });
    if (!screenQueue_.settles(answerPatience)) {
        isGivenUp_ = true;
        screen_->giveUp();
        events_->giveUp();
    }
    screenQueue_.sync([&] { holdLastPicture(end); });
}

/// What came last of a screen that hangs stays until the end, for the sake of all that is beside it.
void ScreenRecorder::Take::holdLastPicture(double end) {
    std::int64_t const last = static_cast<std::int64_t>(end * options_.fps) - 1, from = lastIndex_ + 1;
    if (isEnding_ || from == 0 || last - from < options_.fps) return;
    double const stall = static_cast<double>(from) / options_.fps;
    screenStalls_.begin(stall);
    sideFailures_.push_back(
        fmt::format("No pictures came from the screen after {:.1f} seconds of the take; its last one stays.", stall));
    droppedFrames_ += last - from;
    lastIndex_ = last;
    handOn(static_cast<double>(last) / options_.fps, true);
}

/// Ends every source of frames and events, and lets what is under way arrive.
void ScreenRecorder::Take::stopStreams() {
    if (isStopped_) return;
    isStopped_ = true;
    stopScreen();
    for (auto const& stream : sideStreams_) stream->stop();
    sampleQueue_.sync([] {});
    if (writer_) events_->stop(writer_->duration());
    // All of the log, whatever happens to the process until the project has it.
    if (checkpoints_) checkpoints_->writeNow();
    diskQueue_.stopTimer();
    checkpoints_.reset();
}

/// A take that could not be written to its end still has what was written.
void ScreenRecorder::Take::finishSegments() {
    for (auto const& stream : sideStreams_) {
        std::ranges::move(stream->finish(), std::back_inserter(sideFailures_));
        std::ranges::move(stream->interruptedAt(), std::back_inserter(interruptedAt_));
    }
    sideStreams_.clear(); // finished once, however often joining is tried
    try {
        writer_->finish();
        manifest_->complete();
        writing([&] { manifest_->write(); });
    } catch (CaptureError const& error) {
        endEarly({error.kind, error.what()});
    }
}

void ScreenRecorder::Take::joinInto(FinishedTake& result) {
    result.duration = joinScreen(directory_, writer_->segments()).duration;
    screenAbsences_.end(result.duration); // one that is not over is as long as the film
    auto const wanted = manifest_->record().streams;
    auto beside = joinStreams(directory_, wanted);
    result.metadata = events_->metadata(result.duration);
    result.metadata.micLevels = micLevels_->all();
    trimToDuration(result.metadata, result.duration);
    result.metadata.captureSize = size_;
    result.metadata.scaleFactor = scaleFactor_;
    result.metadata.health = health();
    noteLostStreams(result.metadata.health, wanted, beside);
    result.streams = std::move(beside.streams);
    if (auto const absence = screenAbsences_.sentence(StreamRole::screen)) result.warnings.push_back(*absence);
    if (auto const remark = screen_->remark()) result.warnings.push_back(*remark);
    result.warnings.insert(result.warnings.end(), sideFailures_.begin(), sideFailures_.end());
    result.warnings.insert(result.warnings.end(), beside.warnings.begin(), beside.warnings.end());
}

FinishedTake ScreenRecorder::Take::finish() {
    stopStreams();
    end();
    finishSegments();
    FinishedTake result{.recordingID = recordingID_,
                        .directory = directory_,
                        .movie = joinedStreamPath(directory_, StreamRole::screen)};
    try {
        joinInto(result);
    } catch (MediaError const& error) {
        auto const early = ending();
        std::string const sentence = early ? early->sentence : "segment join failed: " + error.detail() + ".";
        std::error_code ignored;
        bool const isKept = fs::exists(directory_, ignored);
        throw CaptureError(CaptureError::Kind::writeFailed,
                           sentence + (isKept ? " What was recorded is kept in “" + directory_.string() + "”." : ""));
    }
    if (auto const early = ending()) result.endedEarly = early->sentence;
    release();
    return result;
}

void ScreenRecorder::Take::cancel() {
    stopStreams();
    end();
    sideStreams_.clear();
    writer_.reset();
    removeWorkingFolder(directory_);
    release();
}

/// Lets go of all that only a running take needs; whoever asks for its progress may keep it for long.
void ScreenRecorder::Take::release() {
    sideStreams_.clear();
    events_.reset();
    screen_.reset();
    screenPictures_.reset();
    writer_.reset();
    claim_.reset();
}

}
