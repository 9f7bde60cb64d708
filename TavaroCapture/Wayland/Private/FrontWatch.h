#pragma once

#include <TavaroCapture/Sources/Private/FrontTeller.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroPlatform/Sockets/Bell.h>

#include <atomic>
#include <functional>
#include <memory>

namespace tavaro::wayland {

/// Tells which window of the desktop is in front, and each change of that, from a thread of its own.
class FrontWatch {
public:
    /// Who knows, the best first.
    enum class Teller {
        compositor, // of all windows
        programs,   // each of its own, where they tell of their widgets
        nobody,
    };
    /// A window that is gone is often followed by the next one in no time: for so long, none in front is not reported.
    static constexpr double changeSeconds = 0.1;

    /// Of this desktop. Waits four seconds at most, where somebody hangs.
    FrontWatch();
    explicit FrontWatch(std::unique_ptr<FrontTeller> teller); // nothing: nobody knows
    ~FrontWatch();
    FrontWatch(FrontWatch const&) = delete;
    FrontWatch& operator=(FrontWatch const&) = delete;

    Teller teller() const { return kind_; }
    /// Reports what is known at once, on the caller's thread.
    void start(std::function<void(FrontWindow)> report);
    /// Nothing is reported after it.
    void stop();

private:
    void run();
    void waitForNews();
    void reportChange();

    Teller kind_ = Teller::nobody;
    std::unique_ptr<FrontTeller> teller_; // the queue's while it runs, as the next four
    std::function<void(FrontWindow)> report_;
    FrontWindow reported_;
    double goneAt_ = 0; // moment of the media clock since when none is in front, which is not reported; 0: it is
    std::atomic<bool> isEnding_ = false;
    Bell wake_;
    SerialQueue queue_{"com.tavaro.capture.front"}; // runs one task from `start` to `stop`
};

}
