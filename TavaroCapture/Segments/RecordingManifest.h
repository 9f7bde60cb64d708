#pragma once

#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The small files that describe a take in its working folder.
namespace tavaro {

struct SegmentRecord {
    std::int64_t index = 0;
    std::string fileName;
    double start = 0;    // seconds on the take's timeline
    double duration = 0; // seconds

    static constexpr auto fields =
        std::tuple{field("index", &SegmentRecord::index), field("fileName", &SegmentRecord::fileName),
                   field("start", &SegmentRecord::start), field("duration", &SegmentRecord::duration)};
    bool operator==(SegmentRecord const&) const = default;
};
static_assert(listsEveryField<SegmentRecord>);

/// "manifest.json": rewritten as segments close.
struct RecordingManifest {
    UUID recordingID;
    Date createdAt;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t fps = 0;
    std::vector<SegmentRecord> segments; // the closed ones, in order
    bool isComplete = false;

    static constexpr auto fields = std::tuple{
        field("recordingID", &RecordingManifest::recordingID),
        field("createdAt", &RecordingManifest::createdAt),
        field("width", &RecordingManifest::width),
        field("height", &RecordingManifest::height),
        field("fps", &RecordingManifest::fps),
        field("segments", &RecordingManifest::segments),
        field("isComplete", &RecordingManifest::isComplete),
    };
    bool operator==(RecordingManifest const&) const = default;
};
static_assert(listsEveryField<RecordingManifest>);

/// "in-progress.json": there while a take is being recorded, and after it only if nobody finished it.
struct RecordingMarker {
    UUID recordingID;
    std::string directory;
    Date startedAt;
    std::string mode; // "display", "window", "application" or "area"

    static constexpr auto fields =
        std::tuple{field("recordingID", &RecordingMarker::recordingID), field("directory", &RecordingMarker::directory),
                   field("startedAt", &RecordingMarker::startedAt), field("mode", &RecordingMarker::mode)};
    bool operator==(RecordingMarker const&) const = default;
};
static_assert(listsEveryField<RecordingMarker>);

/// "segment-003.mov" for 3.
std::string segmentFileName(std::int64_t index);

std::filesystem::path manifestPath(std::filesystem::path const& directory);
std::filesystem::path markerPath(std::filesystem::path const& directory);
/// The whole take, once its segments are joined.
std::filesystem::path joinedMoviePath(std::filesystem::path const& directory);

void writeManifest(std::filesystem::path const& directory, RecordingManifest const& manifest);
void writeMarker(std::filesystem::path const& directory, RecordingMarker const& marker);
/// None when the file is missing or cannot be read as one.
std::optional<RecordingManifest> readManifest(std::filesystem::path const& directory);
std::optional<RecordingMarker> readMarker(std::filesystem::path const& directory);

}
