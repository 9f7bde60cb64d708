#pragma once

#include <TavaroCapture/Events/Private/EventLog.h>
#include <TavaroCapture/Sources/Private/EventSource.h>
#include <TavaroCore/Recording/RecordingMetadata.h>

#include <memory>

namespace tavaro {

class SerialQueue;
class TakeClock;

/// Logs what the user does for the length of a take: the pointer 60 times a second, presses of its buttons, key presses
/// with their modifiers, and which application is in front. Nothing is logged while the take is paused.
///
/// Pointer ticks run on a queue labelled "com.tavaro.capture.pointer"; presses, keys and focus arrive on the source's
/// thread. Both stamp what they see and hand it to `sampleQueue`, where the log lives.
class EventRecorder {
public:
    /// `frame` is the captured area, on the desktop. `clock` and `sampleQueue` must outlive the recorder.
    EventRecorder(std::unique_ptr<EventSource> source, PixelRect const& frame, TakeClock const& clock,
                  SerialQueue& sampleQueue);
    ~EventRecorder();
    EventRecorder(EventRecorder const&) = delete;
    EventRecorder& operator=(EventRecorder const&) = delete;

    void start();
    /// Ends monitoring and closes what is open at that time of the take. Once it returns, nothing more is logged.
    void stop(double t);
    /// Any thread: the desktop does not answer, so that `stop` need not wait for it.
    void giveUp();

    /// Any thread: the captured area moved.
    void setFrame(PixelRect const& frame);
    PixelRect frame() const;
    /// Whether keys can be logged, and are.
    bool keyboardCaptured() const;

    /// The log of a take of this length: everything up to its end, open spans closed there. Any thread but the sample
    /// queue's.
    RecordingMetadata metadata(double duration) const;
    /// For checkpoints, on the sample queue: what came after what an earlier one holds, and what this one may hold for
    /// good.
    RecordingMetadata since(EventCounts const& held, double t) const;
    EventCounts settled() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
