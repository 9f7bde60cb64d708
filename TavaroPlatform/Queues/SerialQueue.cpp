#include <TavaroPlatform/Queues/SerialQueue.h>

#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroPlatform/Queues/Private/ThreadName.h>

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <exception>
#include <future>
#include <mutex>
#include <optional>
#include <sched.h>
#include <spdlog/spdlog.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace tavaro {

namespace {

struct Timer {
    double due = 0;
    double interval = 0;
    std::shared_ptr<std::function<void(double)>> tick;

    /// Moves `due` past `now` by whole intervals and returns the latest due time that is not after it.
    double advance(double now) {
        double const skipped = std::max(0.0, std::floor((now - due) / interval));
        double const latest = due + skipped * interval;
        due = latest + interval;
        return latest;
    }
};

int nicenessHere() { return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())); }

/// The calling thread's way to the processor. Refusals are fine: most users may not ask.
class ThreadUrgency {
public:
    void become(SerialQueue::Urgency urgency) {
        if (urgency == std::exchange(now_, urgency)) return;
        // Where sessions share the processor as groups, niceness only counts within one; the real-time class counts
        // always.
        bool const isPrompt = urgency == SerialQueue::Urgency::prompt;
        sched_param const lowest{.sched_priority = isPrompt ? sched_get_priority_min(SCHED_RR) : 0};
        if (pthread_setschedparam(pthread_self(), isPrompt ? SCHED_RR : SCHED_OTHER, &lowest) == 0 && isPrompt) return;
        bool const isNormal = urgency == SerialQueue::Urgency::normal;
        setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), isNormal ? usualNiceness_ : raisedNiceness);
    }

private:
    static constexpr int raisedNiceness = -10;

    SerialQueue::Urgency now_ = SerialQueue::Urgency::normal;
    int usualNiceness_ = nicenessHere();
};

}

struct SerialQueue::State {
    std::string label;
    std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable tickEnded;
    std::deque<Task> tasks;
    std::optional<Timer> timer;
    bool isTicking = false;
    bool isEnding = false;
    std::optional<ThreadUrgency> urgency; // the thread's
    std::thread thread;

    void run();
    void guarded(Task const& task);
    void runTimer(std::unique_lock<std::mutex>& lock);
};

void SerialQueue::State::guarded(Task const& task) {
    try {
        task();
    } catch (std::exception const& error) {
        spdlog::error("{}: a task failed: {}", label, error.what());
    }
}

void SerialQueue::State::runTimer(std::unique_lock<std::mutex>& lock) {
    double const scheduled = timer->advance(mediaClockNow());
    auto const tick = timer->tick;
    isTicking = true;
    lock.unlock();
    guarded([&] { (*tick)(scheduled); });
    lock.lock();
    isTicking = false;
    tickEnded.notify_all();
}

void SerialQueue::State::run() {
    std::unique_lock lock(mutex);
    while (true) {
        // Tasks and ticks take turns, so neither a full queue nor a slow tick starves the other.
        if (timer && !isEnding && mediaClockNow() >= timer->due) runTimer(lock);
        if (!tasks.empty()) {
            Task const task = std::move(tasks.front());
            tasks.pop_front();
            lock.unlock();
            guarded(task);
            lock.lock();
        } else if (isEnding) {
            return;
        } else if (timer) {
            std::chrono::duration<double> const wait(timer->due - mediaClockNow());
            if (wait.count() > 0) wake.wait_for(lock, wait);
        } else {
            wake.wait(lock);
        }
    }
}

SerialQueue::SerialQueue(std::string label, Urgency urgency) : state_(std::make_shared<State>()) {
    state_->label = std::move(label);
    state_->thread = std::thread([state = state_, urgency] {
        state->urgency.emplace().become(urgency);
        nameThisThread(state->label);
        state->run();
    });
}

SerialQueue::~SerialQueue() {
    {
        std::lock_guard const lock(state_->mutex);
        state_->isEnding = true;
        state_->timer.reset();
    }
    state_->wake.notify_all();
    if (state_->thread.joinable()) state_->thread.join();
}

void SerialQueue::leave() {
    std::deque<Task> dropped; // outside the lock: what they hold may be large
    {
        std::lock_guard const lock(state_->mutex);
        state_->isEnding = true;
        state_->timer.reset();
        dropped.swap(state_->tasks);
    }
    state_->wake.notify_all();
    state_->thread.detach();
}

std::string const& SerialQueue::label() const { return state_->label; }
void SerialQueue::setUrgency(Urgency urgency) { state_->urgency->become(urgency); }

void SerialQueue::async(Task task) {
    {
        std::lock_guard const lock(state_->mutex);
        state_->tasks.push_back(std::move(task));
    }
    state_->wake.notify_all();
}

void SerialQueue::sync(Task const& task) {
    std::packaged_task<void()> packaged(task);
    auto done = packaged.get_future();
    async([&] { packaged(); });
    done.get();
}

bool SerialQueue::settles(std::chrono::milliseconds atMost) {
    auto const reached = std::make_shared<std::promise<void>>();
    auto const done = reached->get_future();
    async([reached] { reached->set_value(); });
    return done.wait_for(atMost) == std::future_status::ready;
}

void SerialQueue::startTimer(double start, double seconds, std::function<void(double)> tick) {
    {
        std::lock_guard const lock(state_->mutex);
        state_->timer = Timer{start, seconds, std::make_shared<std::function<void(double)>>(std::move(tick))};
    }
    state_->wake.notify_all();
}

void SerialQueue::stopTimer() {
    std::unique_lock lock(state_->mutex);
    state_->timer.reset();
    if (std::this_thread::get_id() == state_->thread.get_id()) return;
    state_->tickEnded.wait(lock, [&] { return !state_->isTicking; });
}

}
