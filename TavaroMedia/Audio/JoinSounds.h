#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace tavaro {

struct SoundPart {
    std::filesystem::path file;
    double start = 0; // seconds on the joined sound's timeline
};

struct JoinedSound {
    double duration = 0;                           // seconds
    std::vector<std::filesystem::path> unreadable; // parts that nothing could be read of: silence now
};

/// Seconds of sound that can be read of an uncompressed file of 48 kHz; 0 where nothing can. Reads all of it, as files
/// cut short do not tell.
double readableSeconds(std::filesystem::path const& sound);

/// Joins uncompressed sound files of 48 kHz, in the order given, into one of 16 bits at `output`. Between parts is
/// silence, and what reaches into the next part is left out. The joined file appears under its name only when complete.
/// Throws `MediaError`: `unreadable` where no part could be read, `notWritable`, `diskFull`.
JoinedSound joinSounds(std::vector<SoundPart> const& parts, std::filesystem::path const& output);

}
