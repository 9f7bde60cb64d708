#pragma once

#include <Tavaro/Model/Jobs/SideQueue.h>
#include <Tavaro/Model/Project/OpenProject.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace tavaro {

/// The projects that an application has open, each one once, for everybody who edits it. A project stays open for as
/// long as somebody keeps what was opened; the last few that were asked for are kept here, so that one that is used
/// again and again is not read each time. Belongs to the main queue; documents are read beside it.
class OpenProjects {
public:
    using Opened = std::shared_ptr<OpenProject>;

    static constexpr std::size_t kept = 3;

    explicit OpenProjects(MainQueue& queue) : side_(queue, "com.tavaro.projects") {}

    /// `handler` hears of each project that is opened.
    void onOpened(std::function<void(Opened const&)> handler) { onOpened_ = std::move(handler); }

    /// Of those that are open and still have their package; null when it is none of them.
    Opened find(UUID const& id);
    /// Opens "NAME.recproj"; what is open already is handed out before this returns. The failures are those of
    /// `OpenProject`.
    void open(std::filesystem::path const& given, std::function<void(Outcome<Opened> const&)> answer);

private:
    using Answers = std::vector<std::function<void(Outcome<Opened> const&)>>;

    void opened(std::filesystem::path const& path, Outcome<ReadProject> const& read);
    Opened openAt(std::filesystem::path const& package) const;
    void keep(Opened const& project);

    std::map<std::filesystem::path, std::weak_ptr<OpenProject>> open_; // by the package's one true path
    std::map<std::filesystem::path, Answers> reading_;
    std::vector<Opened> kept_; // the one asked for last is first
    std::function<void(Opened const&)> onOpened_;
    SideQueue side_;
};

/// The same as `commit` for an agent: the step says which, "Cut (claude-code)".
StepOutcome commitFor(OpenProject& project, std::string_view client, std::string_view step,
                      FunctionRef<void(DemoProject&)> change);

}
