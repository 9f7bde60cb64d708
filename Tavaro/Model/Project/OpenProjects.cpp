#include <Tavaro/Model/Project/OpenProjects.h>

#include <Tavaro/Model/Project/PackagePath.h>

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// The same for every way of writing it, and for links to it.
fs::path truePath(fs::path const& given) {
    std::error_code code;
    auto const path = fs::weakly_canonical(fs::absolute(packagePath(given)), code);
    return code ? packagePath(given) : path;
}

bool isThere(OpenProject const& project) {
    std::error_code ignored;
    return fs::is_directory(project.package().url(), ignored);
}

}

OpenProjects::Opened OpenProjects::find(UUID const& id) {
    for (auto const& [path, weak] : open_) {
        auto const project = weak.lock();
        if (!project || project->document().id != id || !isThere(*project)) continue;
        keep(project);
        return project;
    }
    return nullptr;
}

OpenProjects::Opened OpenProjects::openAt(fs::path const& package) const {
    auto const found = open_.find(package);
    return found == open_.end() ? nullptr : found->second.lock();
}

void OpenProjects::open(fs::path const& given, std::function<void(Outcome<Opened> const&)> answer) {
    auto const path = truePath(given);
    if (auto const project = openAt(path)) {
        keep(project);
        return answer(project);
    }
    auto& waiting = reading_[path];
    waiting.push_back(std::move(answer));
    if (waiting.size() > 1) return;
    side_.ask([path] { return readProject(path); },
              [this, path](Outcome<ReadProject> const& read) { opened(path, read); });
}

void OpenProjects::opened(fs::path const& path, Outcome<ReadProject> const& read) {
    auto const waiting = reading_.extract(path);
    auto const outcome = Outcome<Opened>::of([&] {
        auto project = std::make_shared<OpenProject>(read.value());
        open_.insert_or_assign(path, project);
        keep(project);
        if (onOpened_) onOpened_(project);
        return project;
    });
    for (auto const& answer : waiting.mapped()) answer(outcome);
}

void OpenProjects::keep(Opened const& project) {
    std::erase(kept_, project);
    kept_.insert(kept_.begin(), project);
    if (kept_.size() > kept) kept_.pop_back();
    std::erase_if(open_, [](auto const& each) { return each.second.expired(); });
}

StepOutcome commitFor(OpenProject& project, std::string_view client, std::string_view step,
                      FunctionRef<void(DemoProject&)> change) {
    return project.commit({step, StepMaker::agent, client}, change);
}

}
