#include <TavaroPlatform/Queues/MainQueue.h>

#include <cassert>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <spdlog/spdlog.h>
#include <thread>

namespace tavaro {

struct MainQueue::State {
    std::thread::id const thread = std::this_thread::get_id();
    std::mutex mutex;
    std::condition_variable arrived;
    std::deque<Task> tasks;
    std::function<void()> wake;

    std::optional<Task> next() {
        std::lock_guard const lock(mutex);
        if (tasks.empty()) return std::nullopt;
        auto task = std::move(tasks.front());
        tasks.pop_front();
        return task;
    }
    std::size_t count() {
        std::lock_guard const lock(mutex);
        return tasks.size();
    }
    /// Calls `wake` when there are tasks.
    void wakeIfPending() {
        std::function<void()> call;
        {
            std::lock_guard const lock(mutex);
            if (!tasks.empty()) call = wake;
        }
        if (call) call();
    }
    void waitForTask(std::chrono::milliseconds atMost) {
        std::unique_lock lock(mutex);
        arrived.wait_for(lock, atMost, [&] { return !tasks.empty(); });
    }
};

namespace {

void guarded(MainQueue::Task const& task) {
    try {
        task();
    } catch (std::exception const& error) {
        spdlog::error("main queue: a task failed: {}", error.what());
    }
}

}

MainQueue::MainQueue() : state_(std::make_unique<State>()) {}
MainQueue::~MainQueue() = default;

bool MainQueue::isCurrent() const { return std::this_thread::get_id() == state_->thread; }

void MainQueue::async(Task task) {
    std::function<void()> wake;
    {
        std::lock_guard const lock(state_->mutex);
        if (state_->tasks.empty()) wake = state_->wake;
        state_->tasks.push_back(std::move(task));
        state_->arrived.notify_all(); // inside: the queue may go away as soon as its last task is seen
    }
    if (wake) wake();
}

void MainQueue::runUntil(FunctionRef<bool()> isDone, std::chrono::milliseconds atMost) {
    assert(isCurrent());
    while (!isDone()) {
        if (auto const task = state_->next())
            guarded(*task);
        else
            state_->waitForTask(atMost);
    }
}

void MainQueue::runPending() {
    assert(isCurrent());
    for (auto left = state_->count(); left > 0; --left) {
        if (auto const task = state_->next()) guarded(*task);
    }
    state_->wakeIfPending(); // what came meanwhile may have come to a queue that was not empty
}

void MainQueue::onPending(std::function<void()> wake) {
    assert(isCurrent());
    {
        std::lock_guard const lock(state_->mutex);
        state_->wake = std::move(wake);
    }
    state_->wakeIfPending();
}

}
