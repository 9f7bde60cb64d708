#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>

#include <optional>
#include <string>
#include <vector>

namespace tavaro {

struct VoiceoverSegment {
    UUID id = UUID::random();
    std::string text;
    std::optional<double> anchor; // output time the segment is pinned to
    std::optional<std::string> audioAsset;
    std::optional<double> audioDuration;
    double start = 0;
    double trailingPause = 0; // seconds
    bool isDirty = true;      // the text changed since the audio was made

    /// Seconds of its audio; before there is any, what a voice takes for the text (2.7 words a second, 0.4 s at least).
    double duration() const;
    double end() const { return start + duration(); }

    static constexpr auto fields = std::tuple{
        field("id", &VoiceoverSegment::id),
        field("text", &VoiceoverSegment::text),
        field("anchor", &VoiceoverSegment::anchor),
        field("audioAsset", &VoiceoverSegment::audioAsset),
        field("audioDuration", &VoiceoverSegment::audioDuration),
        field("start", &VoiceoverSegment::start),
        field("trailingPause", &VoiceoverSegment::trailingPause),
        field("isDirty", &VoiceoverSegment::isDirty),
    };
    bool operator==(VoiceoverSegment const&) const = default;
};
static_assert(listsEveryField<VoiceoverSegment>);

struct VoiceSettings {
    std::string voiceID;
    std::string voiceName;
    std::string modelID;
    double stability = 0.5;
    double similarityBoost = 0.75;
    double style = 0;
    double speed = 1;
    bool useSpeakerBoost = true;

    static constexpr auto fields = std::tuple{
        field("voiceID", &VoiceSettings::voiceID),
        field("voiceName", &VoiceSettings::voiceName),
        field("modelID", &VoiceSettings::modelID),
        field("stability", &VoiceSettings::stability),
        field("similarityBoost", &VoiceSettings::similarityBoost),
        field("style", &VoiceSettings::style),
        field("speed", &VoiceSettings::speed),
        field("useSpeakerBoost", &VoiceSettings::useSpeakerBoost),
    };
    bool operator==(VoiceSettings const&) const = default;
};
static_assert(listsEveryField<VoiceSettings>);

struct VoiceoverPlan {
    std::vector<VoiceoverSegment> segments;
    VoiceSettings voice;
    bool ducksOtherAudio = true;
    double duckAmount = 0.7;
    bool stretchesVideoToFit = false;

    static constexpr auto fields = std::tuple{
        field("segments", &VoiceoverPlan::segments),
        field("voice", &VoiceoverPlan::voice),
        field("ducksOtherAudio", &VoiceoverPlan::ducksOtherAudio),
        field("duckAmount", &VoiceoverPlan::duckAmount),
        field("stretchesVideoToFit", &VoiceoverPlan::stretchesVideoToFit),
    };
    bool operator==(VoiceoverPlan const&) const = default;
};
static_assert(listsEveryField<VoiceoverPlan>);

}
