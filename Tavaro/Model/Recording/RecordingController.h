#pragma once

#include <Tavaro/Model/Recording/RecordingError.h>
#include <Tavaro/Model/Recording/RecordingJob.h>

#include <TavaroCore/Records/Observers.h>

#include <array>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavaro {

enum class RecorderPhase {
    idle,
    countdown, // also while the sources are opened
    recording,
    paused,
    finishing, // the take is joined and saved, or thrown away
};

constexpr std::array<std::string_view, 5> namesOf(RecorderPhase) {
    return {"idle", "countdown", "recording", "paused", "finishing"};
}

struct RecorderState {
    RecorderPhase phase = RecorderPhase::idle;
    int countdown = 0;     // whole seconds left of it
    RecorderProgress take; // so far
    bool isAsking = false; // the desktop asks the user what to share; before the countdown
    std::string startedBy; // as the request has it
};

/// What came of a recording.
struct RecordingOutcome {
    enum class Kind {
        saved,
        discarded, // thrown away, or cancelled
        notBegun,  // nothing could be recorded
        notJoined, // the take is kept as an unfinished recording
        notSaved,  // likewise
    };

    Kind kind = Kind::saved;
    std::optional<MadeTake> made;          // when it was saved
    std::exception_ptr failure;            // when it was not: an `Error`
    bool hasBegun = false;                 // whether there was a take
    bool isStopped = false;                // by an order, not by its length or by what happened to its source
    std::vector<std::string> remarks = {}; // what the user should know beside the result, as sentences

    /// The failure as a sentence for who asked for the recording.
    std::string sentence() const;
};

struct RecordingHandlers {
    std::function<void()> begun;                       // the take has its first frame
    std::function<void(std::string const&)> remark;    // what the user should know beside the result, as a sentence
    std::function<void(RecordingOutcome const&)> over; // last; another recording may be started from here
};

/// The recorder of an application: at most one recording at a time, from the request to the saved project, and what
/// everybody may order of it meanwhile. It belongs to the main queue, and calls its handlers and observers there.
/// Orders that do not fit throw `RecordingError`, and change nothing. A controller that goes away leaves what was
/// recorded as an unfinished recording.
class RecordingController {
public:
    explicit RecordingController(MainQueue& queue) : queue_(queue) {}
    ~RecordingController();
    RecordingController(RecordingController const&) = delete;
    RecordingController& operator=(RecordingController const&) = delete;

    RecorderState const& state() const { return state_; }
    bool isIdle() const { return state_.phase == RecorderPhase::idle; }
    /// Throws `RecordingError` while there is a recording: what `start` would do.
    void expectIdle() const;
    /// Whether there is a take that has begun and that nobody has ended.
    bool isTaking() const { return state_.phase == RecorderPhase::recording || state_.phase == RecorderPhase::paused; }

    /// What the present recording films, or the last one did.
    CaptureSource const& source() const { return source_; }

    /// Called before a recording opens its sources, whoever asked for it; it goes on when `next` is called, at once or
    /// later. For who uses a device that the recording may need. Nothing where it is empty.
    void onStarting(std::function<void(std::function<void()> next)> letGo) { letGo_ = std::move(letGo); }
    /// How long its windows take to leave the picture before a take, whoever begins it.
    void setClearing(std::chrono::milliseconds clearing) { clearing_ = clearing; }
    /// Shortcuts that work this recorder, which no take's log has, whoever begins the take.
    void setOwnShortcuts(std::vector<Chord> shortcuts) { ownShortcuts_ = std::move(shortcuts); }
    /// Returns at once; everything that goes wrong from here on is the outcome's.
    void start(RecordingRequest request, RecordingHandlers handlers = {});
    void pause();
    void resume();
    /// Ends the take, of which a project is then made and saved. Nothing where that is under way.
    void stop();
    /// Ends the countdown, or ends the take and removes what was recorded.
    void cancel();
    /// For others than who started it: told once, when the present recording is over.
    void whenOver(std::function<void(RecordingOutcome const&)> handler);

    using Observation = Observers<RecorderState const&>::Observation;
    /// Called after every change, some fifty times a second in a take, for as long as the observation lives.
    [[nodiscard]] Observation observe(std::function<void(RecorderState const&)> observer) {
        return observers_.add(std::move(observer));
    }

private:
    void expectTake(std::string_view order) const;
    void expectRecording() const;
    void setPhase(RecorderPhase phase);
    void follow(RecordingProgress const& progress);
    void finish();
    RecordingOutcome outcome();

    MainQueue& queue_;
    std::function<void(std::function<void()>)> letGo_;
    std::chrono::milliseconds clearing_{0};
    std::vector<Chord> ownShortcuts_;
    CaptureSource source_;
    RecorderState state_;
    std::shared_ptr<RecordingJob> job_; // of the recording in progress
    RecordingStage stage_ = RecordingStage::countdown;
    bool hasBegun_ = false;
    bool isStopped_ = false;
    std::function<void()> begun_;
    std::vector<std::string> remarks_;
    std::vector<std::function<void(RecordingOutcome const&)>> over_;
    Observers<RecorderState const&> observers_;
};

}
