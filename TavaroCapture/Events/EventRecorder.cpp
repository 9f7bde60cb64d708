#include <TavaroCapture/Events/Private/EventRecorder.h>

#include <TavaroCapture/Events/Private/TakeClock.h>
#include <TavaroCapture/Sources/Private/Patience.h>
#include <TavaroCore/Recording/SettledRecording.h>
#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <mutex>

namespace tavaro {

struct EventRecorder::State {
    State(std::unique_ptr<EventSource> source, PixelRect const& frame, TakeClock const& clock, SerialQueue& sampleQueue)
        : clock(clock)
        , sampleQueue(sampleQueue)
        , frame(frame)
        , source(std::move(source)) {}

    TakeClock const& clock;
    SerialQueue& sampleQueue;

    std::mutex mutable frameLock;
    PixelRect frame; // guarded by frameLock
    std::atomic<CursorKind> cursor = CursorKind::arrow;

    EventLog log;          // sampleQueue's
    bool isClosed = false; // sampleQueue's

    std::unique_ptr<EventSource> source;
    SerialQueue pointerQueue{"com.tavaro.capture.pointer"};

    PixelRect currentFrame() const {
        std::lock_guard const lock(frameLock);
        return frame;
    }
    /// Hands what happened at a moment of the media clock to the log, unless the take was paused then.
    template<class Note> void record(double at, Note note) {
        if (auto const t = clock.time(at)) handOn(*t, std::move(note));
    }
    /// Hands on what ends or begins something that lasts: what of it lies in a pause counts as happening at its start.
    template<class Note> void recordChange(double at, Note note) { handOn(clock.elapsed(at), std::move(note)); }
    template<class Note> void handOn(double t, Note note) {
        sampleQueue.async([this, t, note = std::move(note)] {
            if (!isClosed) note(log, t);
        });
    }
    EventHandlers handlers();
    void samplePointer();
    void stopSource();
};

EventHandlers EventRecorder::State::handlers() {
    EventHandlers result;
    result.press = [this](double at, EventHandlers::ButtonPress pressed) {
        PixelRect const area = currentFrame();
        Press press{pressed.button, pressed.point, normalizeTopLeft(pressed.point, area),
                    std::move(pressed.application), std::nullopt};
        if (pressed.windowFrame) press.windowFrame = normalizedFrame(*pressed.windowFrame, area);
        record(at, [press = std::move(press)](EventLog& log, double t) { log.notePress(t, press); });
    };
    result.release = [this](double at, MouseButton button, PixelPoint point) {
        recordChange(at, [=](EventLog& log, double t) { log.noteRelease(t, button, point); });
    };
    result.key = [this](double at, Chord chord) {
        record(at, [chord = std::move(chord)](EventLog& log, double t) { log.noteKey(t, chord); });
    };
    result.cursor = [this](CursorKind kind) { cursor = kind; };
    result.frontmost = [this](FrontWindow const& window) {
        recordChange(mediaClockNow(), [application = window.application](EventLog& log, double t) {
            log.noteFrontmostApplication(t, application);
        });
    };
    return result;
}

void EventRecorder::State::samplePointer() {
    auto const point = source->pointer();
    if (!point) return;
    UnitPoint2 const position = normalizeTopLeft(*point, currentFrame());
    record(mediaClockNow(),
           [=, kind = cursor.load()](EventLog& log, double t) { log.notePointer(t, *point, position, kind); });
}

void EventRecorder::State::stopSource() {
    pointerQueue.async([this] { pointerQueue.stopTimer(); });
    if (!pointerQueue.settles(answerPatience)) source->giveUp();
    pointerQueue.sync([] {});
    source->stop();
}

EventRecorder::EventRecorder(std::unique_ptr<EventSource> source, PixelRect const& frame, TakeClock const& clock,
                             SerialQueue& sampleQueue)
    : state_(std::make_unique<State>(std::move(source), frame, clock, sampleQueue)) {}

EventRecorder::~EventRecorder() {
    state_->stopSource();
    state_->sampleQueue.sync([] {}); // what is on its way to the log needs it
}

void EventRecorder::start() {
    state_->source->start(state_->handlers());
    state_->pointerQueue.startTimer(mediaClockNow(), 1.0 / 60,
                                    [state = state_.get()](double) { state->samplePointer(); });
}

void EventRecorder::stop(double t) {
    state_->stopSource();
    state_->sampleQueue.sync([&] {
        if (!state_->isClosed) state_->log.close(t);
        state_->isClosed = true;
    });
}

void EventRecorder::giveUp() { state_->source->giveUp(); }

void EventRecorder::setFrame(PixelRect const& frame) {
    std::lock_guard const lock(state_->frameLock);
    state_->frame = frame;
}

PixelRect EventRecorder::frame() const { return state_->currentFrame(); }
bool EventRecorder::keyboardCaptured() const { return state_->source->hasKeyboard(); }

RecordingMetadata EventRecorder::since(EventCounts const& held, double t) const { return state_->log.since(held, t); }

EventCounts EventRecorder::settled() const { return state_->log.settled(); }

RecordingMetadata EventRecorder::metadata(double duration) const {
    RecordingMetadata result;
    state_->sampleQueue.sync([&] { result = state_->log.since({}, duration); });
    trimToDuration(result, duration);
    return result;
}

}
