#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// A short sound of one channel, held whole.
struct MonoSound {
    std::vector<float> samples; // full scale ±1
    int rate = 0;               // samples a second

    bool operator==(MonoSound const&) const = default;
};

/// The same sound at another rate, and as long; every frequency that both have stays. Throws `MediaError`
/// (`unsupported`) for rates that no sound has.
MonoSound resampled(MonoSound const& sound, int rate);

/// A WAV file of 16 bits a sample; what is above full scale is cut.
std::string wavBytes(MonoSound const& sound);
/// The first channel of a WAV file of 16 bits a sample. It ends with the bytes, whatever its header says: programs that
/// write into a pipe do not know the length before. Throws `MediaError` (`unreadable`).
MonoSound soundOfWAV(std::string_view bytes);

/// The mean of all channels, at `audioRate`, of the bytes of any sound file that `AudioReader` reads. Throws as it
/// does, and `unsupported` for what lasts longer.
MonoSound soundOfFile(std::string_view bytes, double mostSeconds);

}
