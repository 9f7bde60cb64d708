#pragma once

#include <Tavaro/Agents/Private/LockedProjects.h>
#include <Tavaro/Agents/Private/RunningCall.h>
#include <Tavaro/Model/Jobs/Job.h>
#include <Tavaro/Model/Project/OpenProjects.h>

#include <TavaroCore/Records/UUID.h>
#include <TavaroVision/Scanning/PrivacyScan.h>

#include <functional>
#include <memory>
#include <string>

namespace tavaro {

class Application;
class MainQueue;
struct MadePrivacyScan;

/// The scan of what recordings show, for agents.
class SecretTools {
public:
    SecretTools(MainQueue& queue, Application& application)
        : queue_(queue)
        , application_(application)
        , locked_(queue) {}

    /// Looks at what was not looked at, or once more at everything. What was found is kept, also where nobody waits for
    /// the rest.
    void hide(RunningCall& call, OpenProjects::Opened const& project);

    /// For a take that was just saved, and that the application looks at where the user wants that of each one. When it
    /// has, `over` gets a sentence about it, also where it failed: the take is saved in any case. The sentence is empty
    /// where it is not wanted.
    using Told = std::function<void(RunningCall&, std::string const& sentence)>;
    void tellOfTake(RunningCall& call, UUID const& project, Told const& over);

private:
    using ScanJob = Job<MadePrivacyScan, ScanProgress>;

    std::shared_ptr<ScanJob> begin(RunningCall& call, OpenProjects::Opened const& project);
    void awaitScan(RunningCall& call, OpenProjects::Opened const& project, Told const& over);
    void keep(RunningCall& call, OpenProjects::Opened const& project, MadePrivacyScan const& made);

    MainQueue& queue_;
    Application& application_;
    LockedProjects locked_;
};

}
