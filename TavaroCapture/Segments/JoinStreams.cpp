#include <TavaroCapture/Segments/Private/JoinStreams.h>

#include <TavaroMedia/Audio/JoinSounds.h>
#include <TavaroMedia/Errors/MediaError.h>

#include <algorithm>
#include <fmt/format.h>
#include <optional>

namespace tavaro {

namespace {

template<class Part>
std::vector<Part> partsOf(std::filesystem::path const& directory, std::vector<SegmentRecord> const& segments) {
    std::vector<Part> result;
    for (auto const& segment : segments) result.push_back({directory / segment.fileName, segment.start});
    return result;
}

struct Joined {
    TakeStream stream;
    std::size_t unreadable = 0; // parts
};

Joined joinOne(std::filesystem::path const& directory, StreamRecord const& stream) {
    Joined result{{stream.role, joinedStreamPath(directory, stream.role), stream.offset}};
    if (isSound(stream.role)) {
        auto const joined = joinSounds(partsOf<SoundPart>(directory, stream.segments), result.stream.file);
        result.stream.duration = joined.duration;
        result.unreadable = joined.unreadable.size();
    } else {
        // A movie's time 0 is its first picture, so where its first segment is lost it begins later.
        auto const joined = joinMovies(partsOf<MoviePart>(directory, stream.segments), result.stream.file);
        result.stream.offset += joined.start;
        result.stream.duration = joined.duration - joined.start;
        result.unreadable = joined.unreadable.size();
    }
    return result;
}

void join(std::filesystem::path const& directory, StreamRecord const& stream, JoinedStreams& result) {
    auto const name = spokenName(stream.role);
    if (stream.segments.empty()) {
        // Of a camera and a microphone, the take's health says it.
        if (stream.role == StreamRole::systemSound)
            result.warnings.push_back(fmt::format("The {} was on but recorded nothing.", name));
        return;
    }
    try {
        auto joined = joinOne(directory, stream);
        result.streams.push_back(std::move(joined.stream));
        if (joined.unreadable > 0)
            result.warnings.push_back(fmt::format("Parts of what the {} recorded cannot be read.", name));
    } catch (MediaError const& error) {
        bool const isDamaged =
            error.kind() != MediaError::Kind::diskFull && error.kind() != MediaError::Kind::notWritable;
        if (!isDamaged) throw; // once there is room, all of it can be had
        result.warnings.push_back(
            fmt::format("What the {} recorded cannot be read: {}. The take is without it.", name, error.detail()));
    }
}

}

bool JoinedStreams::has(StreamRole role) const {
    return std::ranges::any_of(streams, [&](TakeStream const& stream) { return stream.role == role; });
}

JoinedMovie joinScreen(std::filesystem::path const& directory, std::vector<SegmentRecord> const& segments) {
    return joinMovies(partsOf<MoviePart>(directory, segments), joinedStreamPath(directory, StreamRole::screen));
}

JoinedStreams joinStreams(std::filesystem::path const& directory, std::vector<StreamRecord> const& streams) {
    JoinedStreams result;
    for (auto const& stream : streams) join(directory, stream, result);
    return result;
}

void noteLostStreams(CaptureHealth& health, std::vector<StreamRecord> const& wanted, JoinedStreams const& joined) {
    for (auto const& stream : wanted) {
        bool const isLost = !joined.has(stream.role);
        if (stream.role == StreamRole::camera) health.cameraLost = isLost;
        if (stream.role == StreamRole::microphone) health.microphoneLost = isLost;
    }
}

}
