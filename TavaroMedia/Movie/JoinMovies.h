#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace tavaro {

struct MoviePart {
    std::filesystem::path file;
    double start = 0; // seconds on the joined movie's timeline
};

struct JoinedMovie {
    double start = 0; // seconds on its own timeline at which the first frame is; above 0 where the first part is lost
    double duration = 0; // seconds, to the end of the last frame
    std::int64_t frameCount = 0;
    std::vector<std::filesystem::path> unreadable; // parts that nothing could be read of, and so were left out
};

/// Joins movies of one encoder's making, in the order given, into one at `output` without encoding again; the container
/// follows the name's ending (mov, mp4). A part cut short gives the frames it has, and a frame that would start at or
/// after the next part's start is left out. The joined file appears under its name only when complete.
/// Throws `MediaError`: `unreadable` where no part could be read, `unsupported` where the parts differ in codec or
/// size, `notWritable`, `diskFull`.
JoinedMovie joinMovies(std::vector<MoviePart> const& parts, std::filesystem::path const& output);

}
