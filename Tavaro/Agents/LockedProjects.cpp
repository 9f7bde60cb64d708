#include <Tavaro/Agents/Private/LockedProjects.h>

#include <Tavaro/Model/Project/ProjectInUse.h>

#include <thread>

namespace tavaro {

namespace {

constexpr std::chrono::milliseconds untilNextTry{100};
constexpr std::chrono::seconds longestWait{5};

}

void LockedProjects::perform(RunningCall& call, Work const& work) {
    perform(call, work, std::chrono::steady_clock::now() + longestWait);
}

void LockedProjects::perform(RunningCall& call, Work const& work, Time end) {
    try {
        work(call);
    } catch (ProjectInUse const&) {
        if (std::chrono::steady_clock::now() >= end) throw;
        auto const pause = [] {
            std::this_thread::sleep_for(untilNextTry);
            return true;
        };
        side_.ask(pause, call.later([this, work, end](RunningCall& here, auto const&) { perform(here, work, end); }));
    }
}

}
