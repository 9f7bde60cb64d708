#pragma once

#include <TavaroCore/Package/ProjectPackage.h>

#include <filesystem>
#include <optional>

namespace tavaro {

struct DemoProject;

/// Seconds of the film at which the project is best recognised: when its first zoom has arrived, else a third into it.
double tellingMoment(DemoProject const& project);

/// Draws the small picture that the library shows, and puts it into the package. A failure is logged and told by an
/// empty result: no project is worse for having no thumbnail, or an old one.
std::optional<std::filesystem::path> writeThumbnail(ProjectPackage const& package, DemoProject const& project);

}
