#include <TavaroCapture/Segments/RecordingManifest.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/JSON.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr std::uint64_t maxBytes = 64 << 20; // a day of segments is below 2 MiB

std::string_view endingOf(StreamRole role) { return isSound(role) ? ".caf" : ".mov"; }

template<class Record> std::optional<Record> readRecord(std::filesystem::path const& file) {
    try {
        if (auto const text = readWholeFile(file, maxBytes)) return decodeJSON<Record>(*text);
    } catch (Error const&) {
        // A damaged file is as good as none: the segments on disk still make a take.
    }
    return std::nullopt;
}

}

std::vector<StreamRecord> streamsOf(RecordingManifest const& manifest) {
    std::vector<StreamRecord> result{{.role = StreamRole::screen,
                                      .codec = "h264",
                                      .width = manifest.width,
                                      .height = manifest.height,
                                      .fps = manifest.fps,
                                      .segments = manifest.segments}};
    result.insert(result.end(), manifest.streams.begin(), manifest.streams.end());
    return result;
}

std::string segmentFileName(std::int64_t index, StreamRole role) {
    std::string_view const stem = role == StreamRole::screen ? "segment" : nameOf(role);
    return fmt::format("{}-{:03}{}", stem, index, endingOf(role));
}

std::filesystem::path joinedStreamPath(std::filesystem::path const& directory, StreamRole role) {
    std::string_view const stem = role == StreamRole::screen ? "recording" : nameOf(role);
    return directory / fmt::format("{}{}", stem, endingOf(role));
}

std::filesystem::path manifestPath(std::filesystem::path const& directory) { return directory / "manifest.json"; }
std::filesystem::path markerPath(std::filesystem::path const& directory) { return directory / "in-progress.json"; }

void writeManifest(std::filesystem::path const& directory, RecordingManifest const& manifest) {
    writeFileAtomically(manifestPath(directory), encodeJSON(manifest));
}

void writeMarker(std::filesystem::path const& directory, RecordingMarker const& marker) {
    writeFileAtomically(markerPath(directory), encodeJSON(marker));
}

std::optional<RecordingManifest> readManifest(std::filesystem::path const& directory) {
    return readRecord<RecordingManifest>(manifestPath(directory));
}

std::optional<RecordingMarker> readMarker(std::filesystem::path const& directory) {
    return readRecord<RecordingMarker>(markerPath(directory));
}

}
