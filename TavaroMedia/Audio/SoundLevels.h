#pragma once

#include <TavaroMedia/Audio/StereoSample.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <span>
#include <vector>

namespace tavaro {

/// How much sound a level looks at.
inline constexpr std::size_t levelWindow = audioRate / 50;

/// How loud these samples are: the root mean square of the louder side, where full scale is 1. To four decimals.
float soundLevel(std::span<StereoSample const> samples);

/// A span of a sound, and into how many entries of one length it is divided.
struct LevelSpan {
    double start = 0;   // seconds of the sound; what lies before its beginning or behind its end is silent
    double seconds = 0; // of the whole span
    std::size_t entries = 0;
};

/// How loud a sound is over the time: of each entry, the level of its loudest window. So a word's edge counts, and a
/// click of a few samples does not.
///
/// Costs the decoding of the span; memory beside the result is bounded. `progress` is told now and then how much is
/// done, 0…1; what it throws ends the work. Throws `MediaError` as `AudioReader` does.
std::vector<float> soundLevels(std::filesystem::path const& file, LevelSpan const& span,
                               std::function<void(double)> const& progress = {});

}
