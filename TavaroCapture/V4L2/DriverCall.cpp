#include <TavaroCapture/V4L2/Private/DriverCall.h>

#include <condition_variable>
#include <map>
#include <mutex>
#include <utility>

namespace tavaro::v4l2 {

namespace {

using Driver = std::pair<VideoSystem const*, std::filesystem::path>;

using Clock = std::chrono::steady_clock;

/// Of the process.
struct Abandoned {
    std::mutex lock;
    std::map<Driver, Clock::time_point> since; // when a call began that nobody waits for any more

    bool hangs(Driver const& driver) const {
        constexpr std::chrono::seconds usual{1}; // a call takes no longer
        auto const found = since.find(driver);
        return found != since.end() && Clock::now() - found->second > usual;
    }
};

/// Never destroyed: a call may outlive `main`.
Abandoned& abandoned() {
    static auto& result = *new Abandoned;
    return result;
}

}

struct DriverCall::State {
    Driver const driver;
    Clock::time_point const begun = Clock::now();
    std::condition_variable changed;
    bool hasReturned = false; // guarded by the lock of `abandoned`

    explicit State(Driver driver) : driver(std::move(driver)) {}

    void end() {
        std::lock_guard const guard(abandoned().lock);
        hasReturned = true;
        abandoned().since.erase(driver);
        changed.notify_all();
    }
    /// False: it is given up.
    bool waitUntil(Deadline until) {
        std::unique_lock lock(abandoned().lock);
        if (changed.wait_until(lock, until, [this] { return hasReturned; })) return true;
        abandoned().since.emplace(driver, begun);
        return false;
    }
};

DriverCall::DriverCall(VideoSystem const& system, VideoNode const& node, std::function<void()> call) {
    Driver driver(&system, node.path);
    {
        std::lock_guard const guard(abandoned().lock);
        if (abandoned().hangs(driver)) return;
    }
    state_ = std::make_shared<State>(std::move(driver));
    queue_ = std::make_unique<SerialQueue>("com.tavaro.capture.cameraCall");
    queue_->async([state = state_, call = std::move(call)] {
        struct AtEnd {
            State& state;
            ~AtEnd() { state.end(); }
        } const ending{*state};
        call();
    });
}

DriverCall::DriverCall(DriverCall&&) noexcept = default;

DriverCall::~DriverCall() {
    if (queue_ && !state_->waitUntil({})) queue_->leave();
}

bool DriverCall::returns(Deadline until) {
    if (!queue_) return false;
    if (state_->waitUntil(until)) return true;
    queue_->leave();
    queue_.reset();
    return false;
}

}
