#pragma once

#include <filesystem>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

namespace tavaro::gallery {

/// A package with twelve seconds of an application and of somebody before a camera, in a folder of its own that goes
/// when this goes.
class Stage {
public:
    /// `folder` must not exist.
    explicit Stage(std::filesystem::path folder);
    ~Stage();
    Stage(Stage const&) = delete;

    ProjectPackage const& package() const { return package_; }
    /// A polished take: gradient, padding, rounded corners, shadow; a pointer that rests on the button "New order" and
    /// clicks it at four seconds; no camera shown.
    DemoProject const& project() const { return project_; }

private:
    std::filesystem::path folder_;
    ProjectPackage package_;
    DemoProject project_;
};

}
