#pragma once

#include <TavaroCore/Project/DemoProject.h>

#include <filesystem>
#include <functional>
#include <string>

namespace tavaro {

class ProjectPackage;
enum class ImportMode;

/// What a new project is made of.
struct NewProject {
    std::filesystem::path movie;
    ImportMode importMode;
    RecordingMetadata metadata; // may be empty
    DemoMode mode = DemoMode::website;
    /// Told, in a sentence, what of the movie could not be brought in: sound that cannot be read, the end of a file cut
    /// short.
    std::function<void(std::string const&)> remark = {};
};

/// A canvas for a recording of that size: the standard 1080-line canvas nearest to its shape, upright for upright
/// recordings.
Size2 canvasFor(Size2 source);

/// Makes the package, brings the movie into it, and saves a project of one clip that shows all of it, with the movie's
/// sound on a track of its own, named for the package. Throws `MediaError` for a movie that cannot be read, and then
/// leaves no package; `FileError`.
DemoProject createProject(ProjectPackage const& package, NewProject const& made);

}
