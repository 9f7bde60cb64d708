#pragma once

#include <deque>
#include <functional>

namespace tavaro {

/// Lets one task in at a time; the others wait, and go in as they came. One thread.
class Turnstile {
public:
    using Task = std::function<void()>;

    /// Runs the task as soon as nobody is inside; who started it calls `leave` once it is over. A task throws nothing.
    void enter(Task task);
    void leave();

private:
    void letIn();

    std::deque<Task> waiting_;
    bool isTaken_ = false;
    bool isLettingIn_ = false;
};

}
