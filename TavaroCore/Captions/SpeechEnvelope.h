#pragma once

#include <TavaroCore/Records/Data.h>

#include <optional>
#include <vector>

namespace tavaro {

/// How loud the sound was that a transcript was made of, as `Transcript::envelope` keeps it: the bytes "SE1", one with
/// how many entries a second has, and then a byte for each entry from the recording's beginning. 0 is silence, 255 full
/// scale, and each step is 96 ÷ 255 decibels.
struct SpeechEnvelope {
    static constexpr int usualRate = 20;

    int rate = usualRate;      // entries a second, 1…255
    std::vector<float> levels; // root mean squares, 0…1

    Data packed() const;
    /// None for bytes that are no envelope.
    static std::optional<SpeechEnvelope> unpacked(Data const& data);
};

}
