#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <TavaroCore/Audio/AudioTrack.h>
#include <TavaroRender/Audio/Private/GainEnvelope.h>

namespace tavaro {

/// What a track asks to be done with its sound before it is mixed.
struct EnhancementSettings {
    bool noiseReduction = false;
    double noiseReductionStrength = 0; // 0…1; 0 without noise reduction
    bool voiceClarity = false;
    bool normalize = false;

    bool isNone() const { return !noiseReduction && !voiceClarity && !normalize; }
    bool operator==(EnhancementSettings const&) const = default;
};

/// An asset as a track hears it.
struct MixSource {
    std::string asset;
    EnhancementSettings enhancement;

    bool operator==(MixSource const&) const = default;
};

/// A stretch of an asset that is heard without a break: output samples [start, end).
struct MixRun {
    std::size_t source = 0; // in the plan's sources
    std::int64_t start = 0;
    std::int64_t end = 0;
    std::int64_t sourceStart = 0; // the asset's sample at `start`
    double speed = 1;
    GainEnvelope envelope; // clip and track gain, fades and edges

    bool operator==(MixRun const&) const = default;
};

struct MixTrack {
    AudioRole role = AudioRole::microphone;
    std::vector<MixRun> runs; // by their starts
    GainEnvelope muting;      // where the picture's clips are muted

    std::vector<SampleSpan> duckWindows;     // known from the document; padded by no ramp
    std::optional<AudioRole> duckedBySignal; // the role whose sound makes further windows
    double duckAmount = 0;                   // 0…1
    GainEnvelope ducking;                    // of all windows, once they are known

    bool operator==(MixTrack const&) const = default;
};

/// All that is heard, in output samples: the mix is made from this and the assets alone.
struct MixPlan {
    std::int64_t length = 0; // samples of the whole output
    std::vector<MixSource> sources;
    std::vector<MixTrack> tracks;
    std::vector<std::int64_t> clicks; // where a click sounds, ascending
    float clickGain = 0;

    bool isSilent() const { return tracks.empty() && clicks.empty(); }
    bool operator==(MixPlan const&) const = default;
};

}
