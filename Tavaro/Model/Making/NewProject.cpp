#include <Tavaro/Model/Making/NewProject.h>

#include <Tavaro/Model/Making/CutShort.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Recording/SettledRecording.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// A package that is begun. Unless it was completed, it is removed again, and what was moved into it goes back.
class PackageInProgress {
public:
    PackageInProgress(ProjectPackage const& package, ImportMode mode) : package_(package), mode_(mode) {
        package_.createDirectories();
    }
    ~PackageInProgress() {
        std::error_code ignored;
        if (!isComplete_ && broughtBack()) fs::remove_all(package_.url(), ignored);
    }
    PackageInProgress(PackageInProgress const&) = delete;
    PackageInProgress& operator=(PackageInProgress const&) = delete;

    void take(fs::path const& file) {
        auto const asset = package_.assetURL(package_.importAsset(file, mode_));
        if (mode_ == ImportMode::move) moved_.emplace_back(file, asset);
    }
    void complete() { isComplete_ = true; }

private:
    /// False where something could not go back: it must not go with the package.
    bool broughtBack() const {
        bool isBack = true;
        for (auto const& [from, asset] : moved_) {
            std::error_code error;
            fs::rename(asset, from, error);
            if (error) fs::copy_file(asset, from, error);
            isBack = isBack && !error;
        }
        return isBack;
    }

    ProjectPackage const& package_;
    ImportMode const mode_;
    std::vector<std::pair<fs::path, fs::path>> moved_; // from where, and the asset
    bool isComplete_ = false;
};

/// The movie's own sound, as long as its pictures; none where it has none that can be heard.
std::vector<AudioTrack> soundOf(NewProject const& made, std::string const& asset, double duration) {
    try {
        AudioReader const sound(made.movie);
    } catch (MediaError const& error) {
        auto const kind = error.kind();
        bool const isNothing = kind == MediaError::Kind::noAudioTrack || kind == MediaError::Kind::emptyAudioTrack;
        if (!isNothing && made.remark) made.remark(std::string(error.what()) + ". The project is made without it.");
        return {};
    }
    return {{.role = AudioRole::system, .clips = {{.asset = asset, .duration = duration}}}};
}

/// Opens a recording beside the movie as it will be read later; one that cannot be is left out with a remark.
template<class Reader> bool isReadable(NewProject const& made, SideRecording const& side) {
    try {
        Reader const reader(side.file);
        return true;
    } catch (MediaError const& error) {
        if (made.remark) made.remark(std::string(error.what()) + ". The project is made without it.");
        return false;
    }
}

std::string assetOf(SideRecording const& side) {
    return ProjectPackage::confinedAssetName(side.file.filename().string());
}

void addCamera(DemoProject& project, NewProject const& made) {
    if (!made.camera || !isReadable<MovieReader>(made, *made.camera)) return;
    project.cameraAsset = assetOf(*made.camera);
    project.cameraOffset = -made.camera->offset; // counted from the camera's own start
    project.assetDurations[*project.cameraAsset] = made.camera->duration;
}

/// The part of the sound that lies within the movie, on a track of its own.
void addSound(DemoProject& project, NewProject const& made, SideSound const& sound) {
    auto const& side = sound.recording;
    double const start = std::max(side.offset, 0.0);
    double const end = std::min(side.offset + side.duration, project.timeline.duration());
    if (end <= start || !isReadable<AudioReader>(made, side)) return;
    auto const asset = assetOf(side);
    project.assetDurations[asset] = side.duration;
    project.audioTracks.push_back(
        {.role = sound.role,
         .clips = {{.asset = asset, .start = start, .sourceStart = start - side.offset, .duration = end - start}}});
}

/// The files that the project names, the movie last: what it holds cannot be had again.
void takeFiles(PackageInProgress& inProgress, NewProject const& made, DemoProject const& project) {
    auto const isNamed = [&](SideRecording const& side) { return project.assetDurations.contains(assetOf(side)); };
    if (made.camera && isNamed(*made.camera)) inProgress.take(made.camera->file);
    for (auto const& sound : made.sounds) {
        if (isNamed(sound.recording)) inProgress.take(sound.recording.file);
    }
    inProgress.take(made.movie);
}

}

Size2 canvasFor(Size2 source) {
    constexpr std::array<Size2, 5> canvases{{{1920, 1080}, {1440, 1080}, {1080, 1080}, {1080, 1350}, {1080, 1920}}};
    if (source.width <= 0 || source.height <= 0) return canvases[0];
    auto const difference = [&](Size2 const& canvas) { return std::abs(std::log(canvas.aspect() / source.aspect())); };
    return *std::min_element(canvases.begin(), canvases.end(),
                             [&](Size2 const& a, Size2 const& b) { return difference(a) < difference(b); });
}

DemoProject createProject(ProjectPackage const& package, NewProject const& made) {
    auto const info = MovieReader(made.movie).info(); // refuses the movie before anything is written
    if (info.isCutShort && made.remark) made.remark(cutShortSentence(made.movie.filename().string(), info.duration));
    PackageInProgress inProgress(package, made.importMode);
    auto const asset = ProjectPackage::confinedAssetName(made.movie.filename().string());

    DemoProject project;
    project.name = package.url().stem().string();
    project.mode = made.mode;
    project.sourceSize = {info.width, info.height};
    project.canvas = canvasFor(project.sourceSize);
    project.exportSettings.size = project.canvas;
    project.timeline.clips.push_back({.asset = asset, .duration = info.duration});
    project.assetDurations[asset] = info.duration;
    if (info.hasAudio) project.audioTracks = soundOf(made, asset, info.duration);
    addCamera(project, made);
    for (auto const& sound : made.sounds) addSound(project, made, sound);
    project.metadata = made.metadata;
    settle(project.metadata.edit(), project.sourceSize);
    package.save(project);
    takeFiles(inProgress, made, project);
    inProgress.complete();
    return project;
}

}
