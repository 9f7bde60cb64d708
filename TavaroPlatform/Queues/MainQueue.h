#pragma once

#include <TavaroCore/Records/FunctionRef.h>

#include <chrono>
#include <functional>
#include <memory>

namespace tavaro {

/// The one thread that a program's model and all that shows it belong to: the one that makes this object. Others hand
/// it tasks; it starts no thread of its own. A program without a loop calls `runUntil`; one that has a loop of its own
/// calls `runPending` from there whenever `onPending` has told it to.
///
/// A task's exception stops here: it is logged and the next task runs.
class MainQueue {
public:
    using Task = std::function<void()>;

    MainQueue();
    /// What has not run by then never does.
    ~MainQueue();
    MainQueue(MainQueue const&) = delete;
    MainQueue& operator=(MainQueue const&) = delete;

    /// Any thread. Returns at once; tasks run in the order in which they came.
    void async(Task task);
    /// Any thread.
    bool isCurrent() const;

    // The queue's own thread, also inside of a task:

    /// Runs tasks until `isDone`, which is asked after each of them and at least every `atMost`.
    void runUntil(FunctionRef<bool()> isDone, std::chrono::milliseconds atMost = std::chrono::milliseconds(20));
    /// Runs the tasks that are there now.
    void runPending();
    /// `wake` is called, on whichever thread, when a task comes to a queue that had none, and here for tasks that are
    /// there already or still there after `runPending`.
    void onPending(std::function<void()> wake);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
