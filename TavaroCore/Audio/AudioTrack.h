#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/TimeRange.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

enum class AudioRole { microphone, system, voiceover, music, camera };

constexpr std::array<std::string_view, 5> namesOf(AudioRole) {
    return {"microphone", "system", "voiceover", "music", "camera"};
}

struct AudioClip {
    UUID id = UUID::random();
    std::string asset;
    double start = 0; // output time
    double sourceStart = 0;
    double duration = 0;
    double gain = 1;    // linear
    double fadeIn = 0;  // seconds
    double fadeOut = 0; // seconds
    double speed = 1;

    TimeRange range() const { return {start, duration}; }
    /// Source seconds covered.
    double sourceSpan() const { return duration * speed; }

    static constexpr auto fields = std::tuple{
        field("id", &AudioClip::id),
        field("asset", &AudioClip::asset),
        field("start", &AudioClip::start),
        field("sourceStart", &AudioClip::sourceStart),
        field("duration", &AudioClip::duration),
        field("gain", &AudioClip::gain),
        field("fadeIn", &AudioClip::fadeIn),
        field("fadeOut", &AudioClip::fadeOut),
        field("speed", &AudioClip::speed),
    };
    bool operator==(AudioClip const&) const = default;
};
static_assert(listsEveryField<AudioClip>);

struct AudioTrack {
    UUID id = UUID::random();
    AudioRole role = AudioRole::microphone;
    std::vector<AudioClip> clips;
    double gain = 1; // linear
    bool isMuted = false;
    bool noiseReduction = false;
    double noiseReductionStrength = 0.6; // 0…1
    bool voiceClarity = false;
    bool normalize = false;
    std::optional<AudioRole> duckedBy; // the role whose signal lowers this track
    double duckAmount = 0.7;           // 0…1

    static constexpr auto fields = std::tuple{
        field("id", &AudioTrack::id),
        field("role", &AudioTrack::role),
        field("clips", &AudioTrack::clips),
        field("gain", &AudioTrack::gain),
        field("isMuted", &AudioTrack::isMuted),
        field("noiseReduction", &AudioTrack::noiseReduction),
        field("noiseReductionStrength", &AudioTrack::noiseReductionStrength),
        field("voiceClarity", &AudioTrack::voiceClarity),
        field("normalize", &AudioTrack::normalize),
        field("duckedBy", &AudioTrack::duckedBy),
        field("duckAmount", &AudioTrack::duckAmount),
    };
    bool operator==(AudioTrack const&) const = default;
};
static_assert(listsEveryField<AudioTrack>);

struct SilenceSpan {
    UUID id = UUID::random();
    double start = 0;
    double duration = 0;
    bool isRemoved = false; // offered for removal

    TimeRange range() const { return {start, duration}; }

    static constexpr auto fields = std::tuple{
        field("id", &SilenceSpan::id),
        field("start", &SilenceSpan::start),
        field("duration", &SilenceSpan::duration),
        field("isRemoved", &SilenceSpan::isRemoved),
    };
    bool operator==(SilenceSpan const&) const = default;
};
static_assert(listsEveryField<SilenceSpan>);

}
