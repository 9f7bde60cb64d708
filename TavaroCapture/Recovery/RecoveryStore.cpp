#include <TavaroCapture/Recovery/RecoveryStore.h>

#include <TavaroCapture/Recovery/Private/MetadataCheckpoints.h>
#include <TavaroCapture/Recovery/Private/WorkingFolderClaim.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Recording/SettledRecording.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/JoinMovies.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <algorithm>
#include <cstdio>
#include <fmt/format.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void failRecovery(std::string const& sentence) {
    throw CaptureError(CaptureError::Kind::recoveryFailed, sentence);
}

std::vector<fs::path> foldersIn(fs::path const& recordings) {
    std::vector<fs::path> result;
    std::error_code ignored;
    for (auto const& entry : fs::directory_iterator(recordings, ignored)) {
        std::error_code error;
        if (!entry.is_symlink(error) && entry.is_directory(error)) result.push_back(entry.path());
    }
    return result;
}

/// Segment movies on disk in index order, with their indices.
std::vector<std::pair<std::int64_t, fs::path>> segmentFiles(fs::path const& directory) {
    std::vector<std::pair<std::int64_t, fs::path>> result;
    std::error_code ignored;
    for (auto const& entry : fs::directory_iterator(directory, ignored)) {
        std::string const name = entry.path().filename().string();
        int index = 0;
        std::error_code error;
        if (std::sscanf(name.c_str(), "segment-%d.mov", &index) == 1 && name == segmentFileName(index) &&
            entry.is_regular_file(error))
            result.emplace_back(index, entry.path());
    }
    std::sort(result.begin(), result.end());
    return result;
}

/// Seconds of picture in a segment that the manifest does not list: the one that was open when its writer died.
double readableSeconds(fs::path const& file) {
    try {
        return MovieReader(file).info().duration;
    } catch (MediaError const&) {
        return 0; // died before its first fragment
    }
}

/// What the manifest says of a segment, unless that cannot be: a damaged manifest must not move pictures about.
SegmentRecord const* listedSegment(RecordingManifest const& manifest, std::int64_t index, double earliest) {
    constexpr double mostSeconds = 1e7;
    for (auto const& segment : manifest.segments) {
        if (segment.index != index) continue;
        bool const isSound = segment.start >= earliest - 0.001 && segment.start < mostSeconds && segment.duration > 0 &&
                             segment.duration < mostSeconds;
        return isSound ? &segment : nullptr;
    }
    return nullptr;
}

void addSegments(RecoveryStore::Recoverable& take) {
    double end = 0;
    for (auto const& [index, file] : segmentFiles(take.marker.directory)) {
        auto const* const listed = listedSegment(take.manifest, index, end);
        SegmentRecord segment =
            listed ? *listed : SegmentRecord{index, file.filename().string(), end, readableSeconds(file)};
        if (segment.duration <= 0) continue;
        end = segment.start + segment.duration;
        take.mediaFiles.push_back(file);
        take.estimatedDuration += segment.duration;
        take.segments.push_back(std::move(segment));
    }
}

std::optional<RecoveryStore::Recoverable> examine(fs::path const& directory) {
    std::error_code ignored;
    if (!fs::exists(markerPath(directory), ignored)) return std::nullopt;
    RecoveryStore::Recoverable take;
    take.marker = readMarker(directory).value_or(RecordingMarker{});
    take.marker.directory = directory.string(); // the folder may have been moved since
    take.manifest = readManifest(directory).value_or(RecordingManifest{});
    take.id = take.marker.recordingID == UUID{} ? take.manifest.recordingID : take.marker.recordingID;
    addSegments(take);
    if (take.segments.empty()) return std::nullopt;
    take.metadata = MetadataCheckpoints::read(directory);
    return take;
}

WorkingFolderClaim claim(fs::path const& directory) {
    auto held = WorkingFolderClaim::take(directory);
    if (!held) failRecovery(fmt::format("The recording in “{}” is in use by another Tavaro.", directory.string()));
    return std::move(*held);
}

bool isWorkingFolder(fs::path const& directory) {
    std::error_code ignored;
    return fs::is_regular_file(manifestPath(directory), ignored) || fs::is_regular_file(markerPath(directory), ignored);
}

void removeFolder(fs::path const& directory) {
    std::error_code error;
    fs::remove_all(directory, error);
    if (error) failRecovery(fmt::format("Could not remove “{}”: {}.", directory.string(), systemReason(error.value())));
}

}

fs::path RecoveryStore::defaultDirectory() { return folders::recordings(); }

fs::path RecoveryStore::metadataCheckpointURL(fs::path const& directory) {
    return MetadataCheckpoints::path(directory);
}

void RecoveryStore::markInProgress(fs::path const& directory, UUID const& recordingID, std::string const& mode) {
    writeMarker(directory, {recordingID, directory.string(), Date::now(), mode});
}

void RecoveryStore::markComplete(fs::path const& directory) {
    std::error_code ignored; // clearing twice is fine
    fs::remove(markerPath(directory), ignored);
}

std::vector<RecoveryStore::Recoverable> RecoveryStore::findRecoverable(fs::path const& recordings) {
    std::vector<Recoverable> result;
    for (auto const& directory : foldersIn(recordings)) {
        if (!isWorkingFolder(directory) || !WorkingFolderClaim::take(directory)) continue;
        if (auto take = examine(directory)) result.push_back(std::move(*take));
    }
    std::sort(result.begin(), result.end(),
              [](auto const& a, auto const& b) { return a.marker.startedAt > b.marker.startedAt; });
    return result;
}

RecoveredTake RecoveryStore::recover(Recoverable const& take) {
    auto const directory = take.directory();
    auto const held = claim(directory);
    std::vector<MoviePart> parts;
    for (std::size_t i = 0; i < take.mediaFiles.size(); ++i)
        parts.push_back({take.mediaFiles[i], take.segments[i].start});
    RecoveredTake result{take.id, directory, joinedMoviePath(directory), 0,
                         take.metadata.value_or(RecordingMetadata{})};
    try {
        auto const joined = joinMovies(parts, result.movie);
        result.duration = joined.duration;
        result.metadata.health.framesWritten = joined.frameCount;
    } catch (MediaError const& error) {
        bool const isUnwritable = error.kind() == MediaError::Kind::notWritable;
        failRecovery((isUnwritable ? "could not create export session: " : "segment join failed: ") + error.detail() +
                     ".");
    }
    if (result.metadata.captureSize == Size2{})
        result.metadata.captureSize = {take.manifest.width, take.manifest.height};
    trimToDuration(result.metadata, result.duration);
    auto manifest = take.manifest;
    manifest.segments = take.segments;
    manifest.isComplete = true;
    writeManifest(directory, manifest);
    return result;
}

void RecoveryStore::discard(Recoverable const& take) {
    auto const held = claim(take.directory());
    removeFolder(take.directory());
}

void RecoveryStore::removeWorkingDirectory(fs::path const& file) {
    auto const directory = file.parent_path();
    if (!isWorkingFolder(directory))
        failRecovery(fmt::format("“{}” is not the working folder of a recording.", directory.string()));
    auto const held = claim(directory);
    markComplete(directory); // first: half a folder is no take to bring back
    removeFolder(directory);
}

int RecoveryStore::pruneOldRecordings(double olderThanSeconds, fs::path const& recordings) {
    int removed = 0;
    for (auto const& directory : foldersIn(recordings)) {
        std::error_code ignored;
        auto const manifest = readManifest(directory);
        if (!manifest || !manifest->isComplete || fs::exists(markerPath(directory), ignored)) continue;
        double const age = static_cast<double>(Date::now().milliseconds - manifest->createdAt.milliseconds) / 1000;
        if (age <= olderThanSeconds || !WorkingFolderClaim::take(directory)) continue;
        removeFolder(directory);
        ++removed;
    }
    return removed;
}

}
