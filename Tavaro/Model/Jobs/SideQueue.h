#pragma once

#include <Tavaro/Model/Jobs/Outcome.h>

#include <TavaroPlatform/Queues/MainQueue.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace tavaro {

/// Short work beside the main queue, on one labelled thread, in the order in which it came; what came of it is
/// delivered on the main queue. It belongs to that queue, which outlives it. When it goes away it waits for the work
/// that runs; what has not begun never does, and nothing is delivered any more.
class SideQueue {
public:
    /// The label names the thread, as of a `SerialQueue`.
    SideQueue(MainQueue& main, std::string label)
        : state_(std::make_shared<State>(main))
        , thread_(std::make_unique<SerialQueue>(std::move(label))) {}
    ~SideQueue() { state_->isGone = true; }
    SideQueue(SideQueue const&) = delete;
    SideQueue& operator=(SideQueue const&) = delete;

    /// `answer` gets the `Outcome` of what `work` returns.
    template<class Work, class Answer> void ask(Work work, Answer answer) {
        using Result = std::invoke_result_t<Work&>;
        thread_->async([state = state_, work = std::move(work), answer = std::move(answer)]() mutable {
            if (state->isGone) return;
            auto const outcome = std::make_shared<Outcome<Result> const>(Outcome<Result>::of(work));
            state->main.async([state, outcome, answer = std::move(answer)] {
                if (!state->isGone) answer(*outcome);
            });
        });
    }
    /// The thread, for who owns something that only it may touch.
    SerialQueue& thread() { return *thread_; }

private:
    struct State {
        explicit State(MainQueue& main) : main(main) {}
        MainQueue& main;
        std::atomic<bool> isGone = false;
    };

    std::shared_ptr<State> const state_;
    std::unique_ptr<SerialQueue> const thread_; // goes first, and waits for the work
};

}
