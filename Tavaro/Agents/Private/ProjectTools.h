#pragma once

#include <Tavaro/Agents/Private/LockedProjects.h>
#include <Tavaro/Agents/Private/RunningCall.h>
#include <Tavaro/Model/Project/OpenProjects.h>

#include <TavaroCore/Direction/PolishOptions.h>

#include <cstdint>
#include <string>

namespace tavaro {

class Application;
class MainQueue;
class SecretTools;
struct GeneratedVoiceover;
struct MadeTranscript;
struct PolishedProject;

/// The tools that look at projects and edit them. Each edit is one step with the client's name, and on the disk before
/// it is answered for.
class ProjectTools {
public:
    ProjectTools(MainQueue& queue, Application& application, SecretTools& secrets)
        : queue_(queue)
        , application_(application)
        , secrets_(secrets)
        , locked_(queue) {}

    void list(RunningCall& call);
    void open(RunningCall& call, OpenProjects::Opened const& project);
    void show(RunningCall& call, OpenProjects::Opened const& project);
    void edit(RunningCall& call, OpenProjects::Opened const& project);
    void editTimeline(RunningCall& call, OpenProjects::Opened const& project);
    void runAction(RunningCall& call, OpenProjects::Opened const& project);

    /// The one opened last; null before the first.
    OpenProjects::Opened const& opened() const { return opened_; }

private:
    /// One try to polish the document that has that revision.
    struct Polishing {
        PolishOptions options;
        int tries = 0; // before
        std::uint64_t revision = 0;
    };
    /// Where the project was edited meanwhile, it is polished again as it is then, a few times.
    void polish(RunningCall& call, OpenProjects::Opened const& project, Polishing polishing);
    void keepPolished(RunningCall& call, OpenProjects::Opened const& project, Polishing const& polishing,
                      PolishedProject const& polished);

    void speak(RunningCall& call, OpenProjects::Opened const& project, std::string const& voice);
    void keepSpoken(RunningCall& call, OpenProjects::Opened const& project, GeneratedVoiceover const& generated);

    void transcribe(RunningCall& call, OpenProjects::Opened const& project, std::string const& locale);
    void keepWords(RunningCall& call, OpenProjects::Opened const& project, MadeTranscript const& made);

    void act(RunningCall& call, OpenProjects::Opened const& project);

    MainQueue& queue_;
    Application& application_;
    SecretTools& secrets_;
    LockedProjects locked_;
    OpenProjects::Opened opened_;
};

}
