#pragma once

#include <Tavaro/Agents/Private/RunningCall.h>
#include <Tavaro/Model/Jobs/SideQueue.h>

#include <chrono>
#include <functional>

namespace tavaro {

/// Calls that save projects which other programs may be editing. The main queue waits for none of them: a call whose
/// project is in use is performed again a moment later, for some seconds, and then fails with that. It belongs to the
/// main queue.
class LockedProjects {
public:
    /// All that a call does; done again from its beginning where it throws `ProjectInUse`.
    using Work = std::function<void(RunningCall&)>;

    explicit LockedProjects(MainQueue& queue) : side_(queue, "com.tavaro.locked-projects") {}

    void perform(RunningCall& call, Work const& work);

private:
    using Time = std::chrono::steady_clock::time_point;

    void perform(RunningCall& call, Work const& work, Time end);

    SideQueue side_;
};

}
