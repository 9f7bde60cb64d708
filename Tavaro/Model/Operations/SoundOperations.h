#pragma once

#include <Tavaro/Model/Operations/OperationInfo.h>

#include <TavaroCore/Audio/AudioTrack.h>
#include <TavaroCore/Editing/TrackEdits.h>
#include <TavaroCore/Records/Fields.h>

#include <array>
#include <string>

namespace tavaro::operations {

/// The problem with a text that is neither a track, nor a time, nor an id; or nothing.
std::string soundProblem(std::string const& text);

struct Mute {
    std::string what; // a track, a time at which the clip is shown, or its id
    bool muted = true;

    static constexpr OperationInfo info{
        .name = "mute", .title = "Mute", .help = "Silences a track, or the recorded sound under one clip"};
    static constexpr std::array parameters{
        Parameter{.name = "WHAT",
                  .help = "a track, a time at which the clip is shown, or its id",
                  .textProblem = soundProblem},
        Parameter{.name = "--off", .help = "let it be heard again", .presence = Presence::optional}};
    static constexpr auto fields = std::tuple{field("what", &Mute::what), field("muted", &Mute::muted)};
    bool operator==(Mute const&) const = default;
};
static_assert(listsEveryField<Mute>);

struct ChangeVolume {
    AudioRole track = AudioRole::microphone;
    double level = 1;

    static constexpr OperationInfo info{.name = "volume", .title = "Change Volume", .help = "Sets how loud a track is"};
    static constexpr std::array parameters{
        Parameter{.name = "TRACK"},
        Parameter{.name = "GAIN", .help = "0 to 2; 1 is as recorded", .range = NumberRange{0, loudestGain, "a gain"}}};
    static constexpr auto fields =
        std::tuple{field("track", &ChangeVolume::track), field("level", &ChangeVolume::level)};
    bool operator==(ChangeVolume const&) const = default;
};
static_assert(listsEveryField<ChangeVolume>);

std::string apply(DemoProject& project, Mute const& mute);
std::string apply(DemoProject& project, ChangeVolume const& change);

}
