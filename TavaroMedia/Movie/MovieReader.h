#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include <TavaroMedia/Frames/VideoFrame.h>

namespace tavaro {

struct MovieInfo {
    int width = 0; // as shown, in square pixels
    int height = 0;
    double duration = 0;  // seconds, to the end of the last frame; of a movie cut short, what is there
    double frameRate = 0; // average, frames a second; 0 where the movie does not tell
    std::optional<std::int64_t> frameCount;
    std::string codec; // "h264", "hevc", "prores", …
    bool hasAudio = false;
    int bitDepth = 8;        // of one colour component
    bool isCutShort = false; // the file ends before the movie does

    bool operator==(MovieInfo const&) const = default;
};

struct MovieReaderOptions {
    int threads = 0; // decoder threads; 0: one a core
    // For who goes back by frames: so many bytes of the pictures that were decoded on the way to the present one stay.
    std::size_t earlierBytes = 0;
};

/// Reads the pictures of a movie. Time 0 is the movie's first frame, whatever its own clock says; of a movie of a
/// steady rate frame n is at n ÷ rate exactly, though its container may round to milliseconds. Playing forward decodes
/// each frame once and never seeks; any other time, but for that of an earlier picture that was kept, costs one seek
/// and the frames from the key frame before it, as many in a long movie as in a short one. One thread at a time.
class MovieReader {
public:
    /// Throws `MediaError`: `missing`, `unreadable`, `noVideoTrack`, `unsupported`.
    explicit MovieReader(std::filesystem::path const& file, MovieReaderOptions const& options = {});
    MovieReader(MovieReader&&) noexcept;
    MovieReader& operator=(MovieReader&&) noexcept;
    ~MovieReader();

    MovieInfo const& info() const;

    /// The frame on show at `seconds`: the last one that starts at or before it. Before the first frame that is the
    /// first, after the end the last; damaged stretches show the frame before them. Never empty.
    VideoFrame frame(double seconds);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
