#pragma once

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Project/DemoProject.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

class ProjectPackage;
enum class ImportMode;

/// A movie or a sound that was recorded beside the movie.
struct SideRecording {
    std::filesystem::path file;
    double offset = 0;   // seconds of the movie at which this one begins; below 0 where it ran before
    double duration = 0; // seconds
};

struct SideSound {
    AudioRole role = AudioRole::microphone;
    SideRecording recording;
};

enum class LogOrigin {
    take,      // the pointer is sampled all along
    elsewhere, // there may be samples only where it moved
};

/// What a new project is made of.
struct NewProject {
    std::filesystem::path movie;
    ImportMode importMode;
    RecordingMetadata metadata; // may be empty
    LogOrigin logOrigin = LogOrigin::take;
    DemoMode mode = DemoMode::website;
    std::optional<SideRecording> camera = {};
    std::vector<SideSound> sounds = {};
    bool isScanDue = false; // for private text
    /// Told, in a sentence, what could not be brought in: a camera or sound that cannot be read, the end of a file cut
    /// short.
    std::function<void(std::string const&)> remark = {};
    /// Of the file that is being copied into the package.
    FileDescriptor::CopyWatch proceed = {};
    /// Told, 0…1, how far the sound is measured, before anything is written; what it throws ends the making.
    std::function<void(double)> measured = {};
};

/// A canvas for a recording of that size: the standard 1080-line canvas nearest to its shape, upright for upright
/// recordings.
Size2 canvasFor(Size2 source);

/// Makes the package, brings the movie into it, and saves a project of one clip that shows all of it, with the movie's
/// sound and each sound beside it on a track of its own and the camera in step, named for the package. A log without
/// levels gets those of the microphones, or where there is none of all sounds. Throws `MediaError` for a movie that
/// cannot be read; `FileError`. It then leaves no package, and every file where it was.
DemoProject createProject(ProjectPackage const& package, NewProject const& made);

}
