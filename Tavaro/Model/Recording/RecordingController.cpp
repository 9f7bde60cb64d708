#include <Tavaro/Model/Recording/RecordingController.h>

#include <fmt/format.h>

#include <utility>

namespace tavaro {

namespace {

using Kind = RecordingOutcome::Kind;

std::string reasonOf(std::exception_ptr const& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (std::exception const& error) {
        return error.what();
    }
}

bool isCancelled(std::exception_ptr const& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (JobCancelled const&) {
        return true;
    } catch (...) {
        return false;
    }
}

}

std::string RecordingOutcome::sentence() const {
    switch (kind) {
    case Kind::saved: return {};
    case Kind::discarded: return hasBegun ? reasonOf(failure) : "Recording didn't start.";
    case Kind::notBegun: return fmt::format("Recording didn't start. {}", reasonOf(failure));
    case Kind::notJoined: return fmt::format("The recording couldn't be saved. {}", reasonOf(failure));
    case Kind::notSaved: return fmt::format("Couldn't save to the library. {}", reasonOf(failure));
    }
    return {};
}

RecordingController::~RecordingController() = default;

void RecordingController::expectIdle() const {
    if (job_) throw RecordingError(RecordingError::Kind::busy, "A recording is already in progress.");
}

void RecordingController::start(RecordingRequest request, RecordingHandlers handlers) {
    expectIdle();
    state_ = {.phase = RecorderPhase::countdown, .countdown = request.countdown, .startedBy = request.startedBy};
    stage_ = RecordingStage::countdown;
    hasBegun_ = isStopped_ = false;
    source_ = request.recorder.source;
    request.clearing = clearing_;
    for (auto const& shortcut : ownShortcuts_) request.recorder.ownShortcuts.push_back(shortcut);
    begun_ = std::move(handlers.begun);
    if (handlers.over) over_.push_back(std::move(handlers.over));
    job_ = std::make_shared<RecordingJob>(queue_, std::move(request));
    job_->onProgress([this](RecordingProgress const& progress) { follow(progress); });
    remarks_.clear();
    job_->onRemark([this, tell = std::move(handlers.remark)](std::string const& remark) {
        remarks_.push_back(remark);
        if (tell) tell(remark);
    });
    job_->onFinished([this] { finish(); });
    if (letGo_)
        letGo_([waiting = std::weak_ptr(job_), hasBegun = std::make_shared<bool>(false)] {
            auto const job = waiting.lock();
            if (job && !std::exchange(*hasBegun, true)) job->start();
        });
    else
        job_->start();
    observers_.notify(RecorderState(state_));
}

void RecordingController::expectRecording() const {
    if (isIdle() || state_.phase == RecorderPhase::finishing)
        throw RecordingError(RecordingError::Kind::notRecording, "Nothing is recording.");
}

void RecordingController::expectTake(std::string_view order) const {
    expectRecording();
    if (state_.phase != RecorderPhase::countdown) return;
    throw RecordingError(RecordingError::Kind::busy,
                         fmt::format("The countdown is still running; wait for it, then {}.", order));
}

void RecordingController::pause() {
    expectTake("pause");
    job_->setPaused(true);
    setPhase(RecorderPhase::paused);
}

void RecordingController::resume() {
    expectRecording();
    if (state_.phase != RecorderPhase::paused)
        throw RecordingError(RecordingError::Kind::notRecording, "The recording isn't paused.");
    job_->setPaused(false);
    setPhase(RecorderPhase::recording);
}

void RecordingController::stop() {
    if (state_.phase == RecorderPhase::finishing) return;
    expectTake("stop");
    job_->end(TakeEnd::keep);
    isStopped_ = true;
    setPhase(RecorderPhase::finishing);
}

void RecordingController::cancel() {
    expectRecording();
    job_->end(TakeEnd::discard);
    setPhase(RecorderPhase::finishing);
}

void RecordingController::whenOver(std::function<void(RecordingOutcome const&)> handler) {
    if (!job_) throw RecordingError(RecordingError::Kind::notRecording, "Nothing is recording.");
    over_.push_back(std::move(handler));
}

void RecordingController::setPhase(RecorderPhase phase) {
    if (std::exchange(state_.phase, phase) != phase) observers_.notify(RecorderState(state_));
}

/// The orders given here decide whether the take counts as paused, not the moment at which its thread follows them.
void RecordingController::follow(RecordingProgress const& progress) {
    stage_ = progress.stage;
    state_.countdown = progress.countdown;
    state_.take = progress.take;
    state_.isAsking = stage_ == RecordingStage::asking;
    hasBegun_ |= stage_ == RecordingStage::recording;
    bool const begins = hasBegun_ && state_.phase == RecorderPhase::countdown;
    if (begins) state_.phase = RecorderPhase::recording;
    if (stage_ > RecordingStage::recording) state_.phase = RecorderPhase::finishing;
    observers_.notify(RecorderState(state_));
    if (auto const begun = begins ? std::exchange(begun_, nullptr) : nullptr) begun();
}

void RecordingController::finish() {
    auto const result = outcome();
    auto const over = std::exchange(over_, {});
    auto const job = std::move(job_); // its handler is running
    begun_ = nullptr;
    state_ = {.take = state_.take};
    observers_.notify(RecorderState(state_));
    for (auto const& handler : over) handler(result);
}

RecordingOutcome RecordingController::outcome() {
    RecordingOutcome result{.hasBegun = hasBegun_, .isStopped = isStopped_, .remarks = std::exchange(remarks_, {})};
    try {
        result.made = job_->result();
    } catch (...) {
        result.failure = std::current_exception();
    }
    if (!result.failure) return result;
    if (isCancelled(result.failure))
        result.kind = Kind::discarded;
    else if (!hasBegun_)
        result.kind = Kind::notBegun;
    else
        result.kind = stage_ == RecordingStage::saving ? Kind::notSaved : Kind::notJoined;
    return result;
}

}
