#pragma once

#include <Tavaro/Model/Project/OpenProject.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tavaro {

/// An open project that its user may close at any time. On the project's thread.
class ClosingProject {
public:
    explicit ClosingProject(std::shared_ptr<OpenProject> project) : project_(std::move(project)) {}

    /// Saves it now. Why closing it would lose what was edited last, as a sentence; nothing where it would not, or
    /// where that was said of this very document already: who closes it all the same wants to.
    std::optional<std::string> loss();

private:
    std::shared_ptr<OpenProject> const project_;
    std::optional<std::uint64_t> told_; // the document's revision
};

}
