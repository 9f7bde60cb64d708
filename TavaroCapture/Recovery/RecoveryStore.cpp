#include <TavaroCapture/Recovery/RecoveryStore.h>

#include <TavaroCapture/Recovery/Private/MetadataCheckpoints.h>
#include <TavaroCapture/Recovery/Private/WorkingFolderClaim.h>
#include <TavaroCapture/Recovery/Private/WorkingFolderRemoval.h>
#include <TavaroCapture/Segments/Private/DarkScreen.h>
#include <TavaroCapture/Segments/Private/JoinStreams.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Recording/EventLists.h>
#include <TavaroCore/Recording/SettledRecording.h>
#include <TavaroMedia/Audio/JoinSounds.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fmt/format.h>
#include <iterator>
#include <spdlog/spdlog.h>

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
        bool const isHidden = entry.path().filename().string().starts_with('.');
        if (!isHidden && !entry.is_symlink(error) && entry.is_directory(error)) result.push_back(entry.path());
    }
    return result;
}

/// Segments of a stream on disk in index order, with their indices.
std::vector<std::pair<std::int64_t, fs::path>> segmentFiles(fs::path const& directory, StreamRole role) {
    std::vector<std::pair<std::int64_t, fs::path>> result;
    std::error_code ignored;
    for (auto const& entry : fs::directory_iterator(directory, ignored)) {
        std::string const name = entry.path().filename().string();
        auto const dash = name.find('-');
        int index = 0;
        std::error_code error;
        if (dash != std::string::npos && std::sscanf(name.c_str() + dash, "-%d", &index) == 1 && index >= 0 &&
            name == segmentFileName(index, role) && entry.is_regular_file(error))
            result.emplace_back(index, entry.path());
    }
    std::sort(result.begin(), result.end());
    return result;
}

/// Seconds of a segment that the manifest does not list: the one that was open when its writer died.
double writtenSeconds(fs::path const& file, StreamRole role) {
    if (isSound(role)) return readableSeconds(file);
    try {
        return MovieReader(file).info().duration;
    } catch (MediaError const&) {
        return 0; // died before its first fragment
    }
}

/// What the manifest says of a segment, unless that cannot be: a damaged manifest must not move pictures about.
SegmentRecord const* listedSegment(std::vector<SegmentRecord> const& segments, std::int64_t index, double earliest) {
    constexpr double mostSeconds = 1e7;
    for (auto const& segment : segments) {
        if (segment.index != index) continue;
        bool const isPossible = segment.start >= earliest - 0.001 && segment.start < mostSeconds &&
                                segment.duration > 0 && segment.duration < mostSeconds;
        return isPossible ? &segment : nullptr;
    }
    return nullptr;
}

/// The segments on disk, placed as the manifest says, or one after the other.
std::vector<SegmentRecord> segmentsOnDisk(fs::path const& directory, StreamRecord const& stream) {
    std::vector<SegmentRecord> result;
    double end = 0;
    for (auto const& [index, file] : segmentFiles(directory, stream.role)) {
        auto const* const listed = listedSegment(stream.segments, index, end);
        SegmentRecord segment =
            listed ? *listed : SegmentRecord{index, file.filename().string(), end, writtenSeconds(file, stream.role)};
        if (segment.duration <= 0) continue;
        segment.fileName = file.filename().string();
        end = segment.start + segment.duration;
        result.push_back(std::move(segment));
    }
    return result;
}

void addScreen(RecoveryStore::Recoverable& take) {
    take.segments = segmentsOnDisk(take.marker.directory, streamsOf(take.manifest).front());
    for (auto const& segment : take.segments) {
        take.mediaFiles.push_back(take.directory() / segment.fileName);
        take.estimatedDuration += segment.duration;
    }
}

/// The streams that the manifest lists. One that only its files tell of, after damage, is taken to begin with the take.
void addStreams(RecoveryStore::Recoverable& take) {
    constexpr double mostSeconds = 1e7;
    for (StreamRole const role : allCases<StreamRole>()) {
        if (role == StreamRole::screen) continue;
        auto const& listed = take.manifest.streams;
        auto const found = std::ranges::find_if(listed, [&](auto const& stream) { return stream.role == role; });
        StreamRecord stream = found != listed.end() ? *found : StreamRecord{.role = role};
        if (!(std::abs(stream.offset) < mostSeconds)) stream.offset = 0;
        stream.segments = segmentsOnDisk(take.directory(), stream);
        if (found != listed.end() || !stream.segments.empty()) take.streams.push_back(std::move(stream));
    }
}

void addLog(RecoveryStore::Recoverable& take) {
    auto saved = MetadataCheckpoints::read(take.directory());
    if (!saved) return;
    take.metadata = std::move(saved->log);
    if (!saved->isWhole)
        take.warnings.emplace_back("Parts of the log are damaged; there the pointer, clicks and keys are missing.");
}

/// When the last of what was recorded beside the screen ends, in seconds of the take.
template<class Streams, class LengthOf> double endOf(Streams const& streams, LengthOf lengthOf) {
    double end = 0;
    for (auto const& stream : streams) end = std::max(end, stream.offset + lengthOf(stream));
    return end;
}

double lengthBeside(RecoveryStore::Recoverable const& take) {
    return endOf(take.streams, [](StreamRecord const& stream) {
        return stream.segments.empty() ? -stream.offset
                                       : stream.segments.back().start + stream.segments.back().duration;
    });
}

/// What of a take can be read, without its log. None of one that ended before there was any picture and more than a
/// moment of sound.
std::optional<RecoveryStore::Recoverable> readable(fs::path const& directory, RecordingMarker marker,
                                                   RecordingManifest manifest) {
    constexpr double shortest = 0.5; // seconds
    RecoveryStore::Recoverable take{.marker = std::move(marker), .manifest = std::move(manifest)};
    take.marker.directory = directory.string(); // the folder may have been moved since
    addScreen(take);
    addStreams(take);
    if (take.segments.empty()) take.estimatedDuration = lengthBeside(take);
    if (take.segments.empty() && take.estimatedDuration < shortest) return std::nullopt;
    return take;
}

std::optional<RecoveryStore::Recoverable> examine(fs::path const& directory) {
    std::error_code ignored;
    if (!fs::exists(markerPath(directory), ignored)) return std::nullopt;
    auto take = readable(directory, readMarker(directory).value_or(RecordingMarker{}),
                         readManifest(directory).value_or(RecordingManifest{}));
    if (!take) return std::nullopt;
    take->id = take->marker.recordingID == UUID{} ? take->manifest.recordingID : take->marker.recordingID;
    addLog(*take);
    return take;
}

/// Of a take that ended before anything of it could be read. What is larger may be worth a repair by hand.
bool hasNothing(fs::path const& directory, RecordingManifest const& manifest) {
    constexpr std::uintmax_t worthKeeping = 1 << 20;
    std::uintmax_t bytes = 0;
    std::error_code error;
    for (auto const& entry : fs::recursive_directory_iterator(directory, error)) {
        std::error_code gone;
        if (entry.is_regular_file(gone)) bytes += entry.file_size(gone);
    }
    return !error && bytes < worthKeeping && !readable(directory, {}, manifest);
}

/// The screen's movie, or a dark one where only what was recorded beside it can be read.
JoinedMovie joinedScreen(RecoveryStore::Recoverable const& take, JoinedStreams& beside) {
    try {
        return joinScreen(take.directory(), take.segments);
    } catch (MediaError const& error) {
        double const length = endOf(beside.streams, [](TakeStream const& stream) { return stream.duration; });
        if (error.kind() != MediaError::Kind::unreadable || length <= 0) throw;
        beside.warnings.emplace_back("What the screen recorded cannot be read: the film is dark, with what was "
                                     "recorded beside the screen.");
        return writeDarkScreen(joinedStreamPath(take.directory(), StreamRole::screen),
                               {take.manifest.width, take.manifest.height}, length);
    }
}

/// Levels that end before the sound does would call its end silent; without them they are measured in the sound.
void dropShortLevels(RecordingMetadata& log, double duration) {
    if (std::ssize(log.micLevels) < std::llround(duration / micLevelSeconds)) log.micLevels.clear();
}

/// Of a take that was recovered, which nobody ended: it is so until a project has it, however often that is tried.
void completeManifest(fs::path const& directory) {
    auto manifest = readManifest(directory);
    if (!manifest || manifest->isComplete) return;
    manifest->isComplete = true;
    try {
        writeManifest(directory, *manifest);
    } catch (Error const& error) {
        spdlog::warn("The working folder of a recording could not be marked as done: {}", error.what());
    }
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
    if (auto const error = removeWorkingFolder(directory)) failRecovery(removalProblem(directory, error));
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
    completeManifest(directory);
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
    RecoveredTake result{.recordingID = take.id,
                         .directory = directory,
                         .movie = joinedStreamPath(directory, StreamRole::screen),
                         .metadata = take.metadata.value_or(RecordingMetadata{})};
    double lostStart = 0; // a movie's time 0 is its first picture, so all else moves up to it
    JoinedStreams beside;
    try {
        beside = joinStreams(directory, take.streams);
        auto const joined = joinedScreen(take, beside);
        lostStart = joined.start;
        result.duration = joined.duration - lostStart;
        result.metadata.health.framesWritten = joined.frameCount;
        // Nobody ended it. One that could not be saved was ended before.
        if (!take.manifest.isComplete) result.metadata.health.captureLost = true;
    } catch (MediaError const& error) {
        bool const isUnwritable = error.kind() == MediaError::Kind::notWritable;
        failRecovery((isUnwritable ? "could not create export session: " : "segment join failed: ") + error.detail() +
                     ".");
    }
    if (result.metadata.captureSize == Size2{})
        result.metadata.captureSize = {take.manifest.width, take.manifest.height};
    cutStart(result.metadata, lostStart);
    dropShortLevels(result.metadata, result.duration);
    trimToDuration(result.metadata, result.duration);
    noteLostStreams(result.metadata.health, take.streams, beside);
    result.streams = std::move(beside.streams);
    for (auto& stream : result.streams) stream.offset -= lostStart;
    result.warnings = take.warnings;
    std::ranges::move(beside.warnings, std::back_inserter(result.warnings));
    auto manifest = take.manifest;
    manifest.segments = take.segments;
    manifest.streams = take.streams;
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
    removeFolder(directory);
}

PrunedRecordings RecoveryStore::pruneOldRecordings(double olderThanSeconds, fs::path const& recordings) {
    PrunedRecordings pruned{.problems = finishRemovals(recordings)};
    for (auto const& directory : foldersIn(recordings)) {
        std::error_code ignored;
        auto const manifest = readManifest(directory);
        bool const isUnfinished = fs::exists(markerPath(directory), ignored);
        if (!manifest || (!manifest->isComplete && !isUnfinished)) continue;
        double const age = static_cast<double>(Date::now().milliseconds - manifest->createdAt.milliseconds) / 1000;
        if (age <= olderThanSeconds || !WorkingFolderClaim::take(directory)) continue;
        if (isUnfinished && !hasNothing(directory, *manifest)) continue;
        auto const error = removeWorkingFolder(directory);
        if (error) pruned.problems.push_back(removalProblem(directory, error));
        if (!error) ++pruned.removed;
    }
    return pruned;
}

}
