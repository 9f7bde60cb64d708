#pragma once

#include <TavaroCapture/Secrets/Private/FieldFocus.h>
#include <TavaroCapture/Secrets/Private/TerminalPrompts.h>
#include <TavaroCapture/Sources/Private/EventSource.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroPlatform/Sockets/Bell.h>

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace tavaro {

/// Which keys are for the log.
struct LoggedKeys {
    KeyLogging logging = KeyLogging::all;
    std::vector<Chord> never = {}; // the recorder's own shortcuts
};

/// What another source reports, less the keys that go into a password field or a terminal's prompt. Where a key goes is
/// known only when the program in front has got round to it, which may have been given keys before that move its focus.
/// So each key is held back: for a moment, and until that program has answered a question that it was asked after it.
/// Where a password field had the keyboard at any time in between, or the program does not answer, nobody learns of the
/// key. All other reports go through at once.
class GuardedEvents final : public EventSource {
public:
    /// `focus` is none where programs tell nothing of their widgets.
    GuardedEvents(std::unique_ptr<EventSource> source, LoggedKeys keys, std::unique_ptr<FieldFocus> focus,
                  TerminalPrompts terminals = TerminalPrompts());
    ~GuardedEvents() override;

    void start(EventHandlers handlers) override;
    void stop() override;
    void giveUp() override { source_->giveUp(); }
    bool hasKeyboard() const override { return source_->hasKeyboard(); }
    bool knowsFront() const override { return source_->knowsFront(); }
    std::vector<std::string> limits() const override { return source_->limits(); }
    std::optional<PixelPoint> pointer() override { return source_->pointer(); }

private:
    struct HeldKey {
        double at;
        Chord chord;
        int process; // in front; 0: unknown
        double arrivedAt;
        bool isSecret = false;
        bool isLookedAt = false; // what its field shows
    };

    void run();
    void loseFocus();
    void waitForNews();
    void takeArrived();
    void noteSecrets();
    bool terminalAsks(int process);
    void lookForDots();
    void askForOldest();
    void settle(FieldFocus::Content content);
    bool isOver() const;

    std::unique_ptr<EventSource> const source_;
    LoggedKeys const keys_;
    EventHandlers handlers_;
    std::atomic<int> front_ = 0; // process
    std::atomic<bool> isFrontSecret_ = false;
    std::atomic<bool> wasFrontSecret_ = false; // since the held keys were looked at
    std::mutex arriving_;
    std::vector<HeldKey> arrived_; // guarded by arriving_
    Bell wake_;
    std::atomic<double> endedAt_ = 0; // moment of the media clock; 0: not yet

    // The queue's.
    std::unique_ptr<FieldFocus> focus_;
    TerminalPrompts terminals_;
    std::deque<HeldKey> held_;
    std::size_t asked_ = 0; // of the held ones, for which the program's answer is awaited

    SerialQueue queue_{"com.tavaro.capture.keys"}; // runs one task from `start` to `stop`
};

/// The source as it is where no keys are logged, else guarded by all that can be known on `display`.
std::unique_ptr<EventSource> guarded(std::unique_ptr<EventSource> source, LoggedKeys const& keys,
                                     std::string const& display);

}
