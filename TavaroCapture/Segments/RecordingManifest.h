#pragma once

#include <TavaroCapture/Sources/StreamRole.h>
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
    double start = 0;    // seconds on the stream's timeline; the screen's is the take's
    double duration = 0; // seconds

    static constexpr auto fields =
        std::tuple{field("index", &SegmentRecord::index), field("fileName", &SegmentRecord::fileName),
                   field("start", &SegmentRecord::start), field("duration", &SegmentRecord::duration)};
    bool operator==(SegmentRecord const&) const = default;
};
static_assert(listsEveryField<SegmentRecord>);

/// One stream of a take, written into segments of its own.
struct StreamRecord {
    StreamRole role = StreamRole::screen;
    double offset = 0;                   // seconds of the take at which the stream begins; below 0 where it ran before
    std::string codec;                   // "h264", "pcm_s16le"
    std::int64_t width = 0;              // of pictures
    std::int64_t height = 0;             // of pictures
    std::int64_t fps = 0;                // of pictures
    std::int64_t sampleRate = 0;         // of sound
    std::int64_t channels = 0;           // of sound
    std::vector<SegmentRecord> segments; // the closed ones, in order

    static constexpr auto fields = std::tuple{
        field("role", &StreamRecord::role),
        field("offset", &StreamRecord::offset),
        field("codec", &StreamRecord::codec),
        field("width", &StreamRecord::width),
        field("height", &StreamRecord::height),
        field("fps", &StreamRecord::fps),
        field("sampleRate", &StreamRecord::sampleRate),
        field("channels", &StreamRecord::channels),
        field("segments", &StreamRecord::segments),
    };
    bool operator==(StreamRecord const&) const = default;
};
static_assert(listsEveryField<StreamRecord>);

/// "manifest.json": rewritten as segments close. Its own size, rate and segments are those of the screen, which is all
/// that takes had once.
struct RecordingManifest {
    UUID recordingID;
    Date createdAt;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t fps = 0;
    std::vector<SegmentRecord> segments; // the closed ones, in order
    bool isComplete = false;
    std::vector<StreamRecord> streams; // beside the screen

    static constexpr auto fields = std::tuple{
        field("recordingID", &RecordingManifest::recordingID),
        field("createdAt", &RecordingManifest::createdAt),
        field("width", &RecordingManifest::width),
        field("height", &RecordingManifest::height),
        field("fps", &RecordingManifest::fps),
        field("segments", &RecordingManifest::segments),
        field("isComplete", &RecordingManifest::isComplete),
        field("streams", &RecordingManifest::streams),
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

/// The screen first, then what was recorded beside it.
std::vector<StreamRecord> streamsOf(RecordingManifest const& manifest);

/// "segment-003.mov" for 3 of the screen, "camera-003.mov", "microphone-003.caf".
std::string segmentFileName(std::int64_t index, StreamRole role = StreamRole::screen);
/// A whole stream, once its segments are joined: "recording.mov", "camera.mov", "microphone.caf".
std::filesystem::path joinedStreamPath(std::filesystem::path const& directory, StreamRole role);

std::filesystem::path manifestPath(std::filesystem::path const& directory);
std::filesystem::path markerPath(std::filesystem::path const& directory);

void writeManifest(std::filesystem::path const& directory, RecordingManifest const& manifest);
void writeMarker(std::filesystem::path const& directory, RecordingMarker const& marker);
/// None when the file is missing or cannot be read as one.
std::optional<RecordingManifest> readManifest(std::filesystem::path const& directory);
std::optional<RecordingMarker> readMarker(std::filesystem::path const& directory);

}
