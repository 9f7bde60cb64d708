#pragma once

#include "../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Project/OpenProject.h>

#include <memory>
#include <utility>

namespace tavaro {

/// An open project of one test, in a package of its own.
class TestProject {
public:
    explicit TestProject(DemoProject project) : package_(folder_ / "Film.recproj") {
        project.modifiedAt = {}; // long ago
        package_.createDirectories();
        package_.save(project);
        open_ = std::make_shared<OpenProject>(readProject(package_.url()));
    }

    std::shared_ptr<OpenProject> const& open() const { return open_; }
    OpenProject* operator->() const { return open_.get(); }
    DemoProject const& document() const { return open_->document(); }
    ProjectPackage const& package() const { return package_; }

    /// What another program does: loads the document, changes it and saves.
    template<class Change> void editOutside(Change change) const {
        auto project = package_.load();
        change(project);
        package_.save(project);
    }

private:
    TemporaryFolder folder_{TemporaryFolder::fastest()};
    ProjectPackage package_;
    std::shared_ptr<OpenProject> open_;
};

}
