#pragma once

#include <TavaroPlatform/Processes/DetachedProcess.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <memory>
#include <vector>

namespace tavaro {

/// The programs that were started here and go on by themselves. One that has ended would stay in the list of processes
/// for as long as this program runs, so each is looked at once a second, on a thread that there is from the first one
/// on.
class StartedPrograms {
public:
    void add(DetachedProcess program);

private:
    void forgetEnded();

    std::vector<DetachedProcess> running_; // of the thread
    std::unique_ptr<SerialQueue> thread_;
};

}
