#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace tavaro {

/// One labelled thread that runs tasks in the order they were given. The label ("com.tavaro.capture.samples") names the
/// thread in debuggers and logs by its last parts.
///
/// A task's exception stops here: it is logged with the label and the next task runs. Whoever must know of a failure
/// catches it inside the task.
class SerialQueue {
public:
    using Task = std::function<void()>;

    /// How soon the thread runs when others want the processor too, as far as the system lets this user ask for it.
    /// `raised` is for heavy work that must keep up; `prompt` for short work that loses something when it comes late:
    /// it goes before everything else.
    enum class Urgency { normal, raised, prompt };

    explicit SerialQueue(std::string label, Urgency urgency = Urgency::normal);
    /// Ends the timer, runs what is queued, joins.
    ~SerialQueue();
    SerialQueue(SerialQueue const&) = delete;
    SerialQueue& operator=(SerialQueue const&) = delete;

    std::string const& label() const;
    /// The queue's own tasks only: from then on. Costs nothing where it is so already.
    void setUrgency(Urgency urgency);

    /// Any thread. Returns at once.
    void async(Task task);
    /// Any thread but the queue's own. Runs the task after everything queued before it; its exception reaches the
    /// caller.
    void sync(Task const& task);
    /// Any thread but the queue's own. Waits until everything queued so far has run; false where that takes longer.
    bool settles(std::chrono::milliseconds atMost);

    /// Runs `tick(scheduled)` every `seconds`, the first time at `start` on the media clock; `scheduled` is the time
    /// the tick was due, start + n × seconds, so lateness does not add up. Ticks whose time passed while a task ran are
    /// left out, all but the latest: a slow tick is followed by the newest due one. One timer a queue; starting
    /// replaces it.
    void startTimer(double start, double seconds, std::function<void(double scheduled)> tick);
    /// Any thread. After it returns no further tick starts; called elsewhere than on the queue, none is running.
    void stopTimer();

    /// Any thread but the queue's own. Ends the queue without waiting, for a task that hangs: its thread is left to
    /// that task, which must own all that it uses. What was queued behind it never runs, and nothing more may be asked.
    void leave();

private:
    struct State;
    std::shared_ptr<State> state_; // the thread's, too
};

}
