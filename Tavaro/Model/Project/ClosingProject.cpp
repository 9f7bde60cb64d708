#include <Tavaro/Model/Project/ClosingProject.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>

#include <utility>

namespace tavaro {

std::optional<std::string> ClosingProject::loss() {
    if (!project_->hasUnsavedChanges()) return std::nullopt;
    auto const revision = project_->revision();
    try {
        if (project_->save() != SaveOutcome::changedOutside) return std::nullopt;
        return fmt::format("Another program saved “{}” meanwhile. What you did last is one undo away.",
                           project_->document().name);
    } catch (Error const& error) {
        if (std::exchange(told_, revision) == revision) return std::nullopt;
        return fmt::format("{} What you did last is lost if you close it once more.", error.what());
    }
}

}
