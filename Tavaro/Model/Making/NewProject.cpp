#include <Tavaro/Model/Making/NewProject.h>

#include <Tavaro/Model/Making/Private/CutShort.h>
#include <Tavaro/Model/Privacy/DueScan.h>

#include <TavaroCore/Package/PendingPackage.h>
#include <TavaroCore/Recording/EventLists.h>
#include <TavaroCore/Recording/SettledPointer.h>
#include <TavaroCore/Recording/SettledRecording.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Audio/SoundLevels.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

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

/// The sounds that tell where somebody speaks: the microphones, or where there is none all that is heard.
std::vector<SideRecording> voicesOf(NewProject const& made, DemoProject const& project) {
    std::vector<SideRecording> voices;
    bool const hasMicrophone = std::ranges::count(project.audioTracks, AudioRole::microphone, &AudioTrack::role) > 0;
    for (auto const& sound : made.sounds) {
        bool const isKept = project.assetDurations.contains(assetOf(sound.recording));
        if (isKept && (sound.role == AudioRole::microphone || !hasMicrophone)) voices.push_back(sound.recording);
    }
    auto const isMovies = [&](AudioTrack const& track) {
        return !track.clips.empty() && track.clips[0].asset == project.timeline.clips[0].asset;
    };
    if (!hasMicrophone && std::ranges::any_of(project.audioTracks, isMovies)) voices.push_back({made.movie});
    return voices;
}

/// Levels of all the voices over the movie, in entries as a recording has them; none without a voice.
std::vector<float> levelsOf(NewProject const& made, std::vector<SideRecording> const& voices, double duration) {
    std::vector<float> levels;
    for (std::size_t i = 0; i < voices.size(); ++i) {
        auto const progress = [&](double done) {
            if (made.measured) made.measured((static_cast<double>(i) + done) / static_cast<double>(voices.size()));
        };
        auto const entries = static_cast<std::size_t>(std::max(std::round(duration / micLevelSeconds), 1.0));
        auto const measured = soundLevels(
            voices[i].file, {.start = -voices[i].offset, .seconds = duration, .entries = entries}, progress);
        levels.resize(measured.size());
        std::ranges::transform(levels, measured, levels.begin(), [](float a, float b) { return std::max(a, b); });
    }
    return levels;
}

RecordingMetadata logOf(NewProject const& made, DemoProject const& project, double duration) {
    auto log = made.metadata;
    settle(log, project.sourceSize);
    if (made.logOrigin == LogOrigin::elsewhere) settlePointer(log, duration);
    if (log.micLevels.empty()) log.micLevels = levelsOf(made, voicesOf(made, project), duration);
    return log;
}

/// The files that the project names.
std::vector<fs::path> filesOf(NewProject const& made, DemoProject const& project) {
    std::vector<fs::path> files{made.movie};
    auto const add = [&](SideRecording const& side) {
        if (project.assetDurations.contains(assetOf(side))) files.push_back(side.file);
    };
    if (made.camera) add(*made.camera);
    for (auto const& sound : made.sounds) add(sound.recording);
    return files;
}

/// What is to be moved is linked first and removed at the end, so that it has a name at every instant.
void write(ProjectPackage const& wanted, DemoProject const& project, NewProject const& made) {
    auto const files = filesOf(made, project);
    bool const moves = made.importMode == ImportMode::move;
    PendingPackage pending(wanted);
    try {
        pending.package().save(project);
        if (made.isScanDue) DueScan::note(pending.package().url());
        for (auto const& file : files)
            pending.package().importAsset(file, moves ? ImportMode::link : made.importMode, made.proceed);
        pending.complete();
    } catch (FileError const& failure) {
        throw pending.named(failure);
    }
    std::error_code ignored;
    for (auto const& file : files)
        if (moves) fs::remove(file, ignored);
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
    project.metadata = logOf(made, project, info.duration);
    write(package, project, made);
    return project;
}

}
