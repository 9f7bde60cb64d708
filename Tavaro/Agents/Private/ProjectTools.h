#pragma once

#include <Tavaro/Agents/Private/RunningCall.h>
#include <Tavaro/Model/Project/OpenProjects.h>

#include <TavaroCore/Direction/PolishOptions.h>

namespace tavaro {

class Application;
class MainQueue;

/// The tools that look at projects and edit them. Each edit is one step with the client's name, and on the disk before
/// it is answered for.
class ProjectTools {
public:
    ProjectTools(MainQueue& queue, Application& application) : queue_(queue), application_(application) {}

    void list(RunningCall& call);
    void open(RunningCall& call, OpenProjects::Opened const& project);
    void show(RunningCall& call, OpenProjects::Opened const& project);
    void edit(RunningCall& call, OpenProjects::Opened const& project);
    void editTimeline(RunningCall& call, OpenProjects::Opened const& project);
    void runAction(RunningCall& call, OpenProjects::Opened const& project);

    /// The one opened last; null before the first.
    OpenProjects::Opened const& opened() const { return opened_; }

private:
    void polish(RunningCall& call, OpenProjects::Opened const& project, PolishOptions const& options);

    MainQueue& queue_;
    Application& application_;
    OpenProjects::Opened opened_;
};

}
