#pragma once

#include <Tavaro/Model/Operations/OperationInfo.h>

#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Editing/TranscriptEdits.h>
#include <TavaroCore/Records/Fields.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string>

/// The operations that find by themselves what to shorten: silence, typing, pauses and words of the transcript.
namespace tavaro::operations {

struct RemoveSilence {
    static constexpr OperationInfo info{
        .name = "remove-silence", .title = "Remove Silence", .help = "Takes out the silences that polishing found"};
    static constexpr std::array<Parameter, 0> parameters{};
    static constexpr std::tuple<> fields{};
    bool operator==(RemoveSilence const&) const = default;
};

struct SpeedUpTyping {
    double rate = 2;

    static constexpr OperationInfo info{
        .name = "speed-up-typing", .title = "Speed Up Typing", .help = "Plays long typing faster"};
    static constexpr std::array parameters{Parameter{.name = "FACTOR",
                                                     .help = "times as fast, up to 16; 2 unless told",
                                                     .presence = Presence::optional,
                                                     .range = NumberRange{1, fastestRate, "a factor"}}};
    static constexpr auto fields = std::tuple{field("rate", &SpeedUpTyping::rate)};
    bool operator==(SpeedUpTyping const&) const = default;
};
static_assert(listsEveryField<SpeedUpTyping>);

struct TightenPauses {
    double threshold = PauseTightening{}.threshold;
    double keep = PauseTightening{}.keep;

    static constexpr OperationInfo info{
        .name = "tighten-pauses", .title = "Tighten Pauses", .help = "Shortens the long pauses between words"};
    static constexpr std::array parameters{Parameter{.name = "--threshold",
                                                     .help = "seconds from which on a pause is long; 0.6",
                                                     .presence = Presence::optional,
                                                     .range = NumberRange{.most = 3600}},
                                           Parameter{.name = "--keep",
                                                     .help = "seconds that stay of each; 0.25",
                                                     .presence = Presence::optional,
                                                     .range = NumberRange{.most = 3600}}};
    static constexpr auto fields =
        std::tuple{field("threshold", &TightenPauses::threshold), field("keep", &TightenPauses::keep)};
    bool operator==(TightenPauses const&) const = default;
};
static_assert(listsEveryField<TightenPauses>);

struct RemoveFillers {
    static constexpr OperationInfo info{
        .name = "remove-fillers", .title = "Remove Filler Words", .help = "Takes out um, uh and their like"};
    static constexpr std::array<Parameter, 0> parameters{};
    static constexpr std::tuple<> fields{};
    bool operator==(RemoveFillers const&) const = default;
};

struct DeleteWords {
    std::size_t first = 0; // index in the transcript
    std::optional<std::size_t> last;

    static constexpr OperationInfo info{
        .name = "delete-words", .title = "Delete Words", .help = "Takes words out with their picture"};
    static constexpr std::array parameters{Parameter{.name = "FROM", .help = "number of the first word, from 0"},
                                           Parameter{.name = "TO",
                                                     .help = "number of the last word; only one word unless told",
                                                     .presence = Presence::optional}};
    static constexpr auto fields = std::tuple{field("first", &DeleteWords::first), field("last", &DeleteWords::last)};
    bool operator==(DeleteWords const&) const = default;
};
static_assert(listsEveryField<DeleteWords>);

std::string apply(DemoProject& project, RemoveSilence const& removal);
std::string apply(DemoProject& project, SpeedUpTyping const& change);
std::string apply(DemoProject& project, TightenPauses const& tightening);
std::string apply(DemoProject& project, RemoveFillers const& removal);
std::string apply(DemoProject& project, DeleteWords const& deletion);

}
