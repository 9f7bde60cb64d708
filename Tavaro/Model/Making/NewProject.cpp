#include <Tavaro/Model/Making/NewProject.h>

#include <Tavaro/Model/Making/CutShort.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// Removes a package that was begun, unless it was completed.
class PackageInProgress {
public:
    explicit PackageInProgress(ProjectPackage const& package) : package_(package) { package_.createDirectories(); }
    ~PackageInProgress() {
        std::error_code ignored;
        if (!isComplete_) fs::remove_all(package_.url(), ignored);
    }
    PackageInProgress(PackageInProgress const&) = delete;
    PackageInProgress& operator=(PackageInProgress const&) = delete;

    void complete() { isComplete_ = true; }

private:
    ProjectPackage const& package_;
    bool isComplete_ = false;
};

/// Until the recorder says otherwise, a log that knows no frame size belongs to the movie's.
void settle(RecordingMetadata& metadata, Size2 size) {
    if (metadata.captureSize.width <= 0 || metadata.captureSize.height <= 0) metadata.captureSize = size;
    std::stable_sort(metadata.cursorSamples.begin(), metadata.cursorSamples.end(),
                     [](CursorSample const& a, CursorSample const& b) { return a.t < b.t; });
    std::stable_sort(metadata.clicks.begin(), metadata.clicks.end(),
                     [](ClickEvent const& a, ClickEvent const& b) { return a.t < b.t; });
    std::stable_sort(metadata.keystrokes.begin(), metadata.keystrokes.end(),
                     [](KeystrokeEvent const& a, KeystrokeEvent const& b) { return a.t < b.t; });
}

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
    PackageInProgress inProgress(package);
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
    project.metadata = made.metadata;
    settle(project.metadata.edit(), project.sourceSize);
    package.save(project);
    package.importAsset(made.movie, made.importMode); // last: a movie that was moved must not go with a failed package
    inProgress.complete();
    return project;
}

}
