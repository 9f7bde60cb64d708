#pragma once

#include <Tavaro/Model/Operations/OperationInfo.h>

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Speech/TranscriptCaptions.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

/// The operations that make captions, in place of those that the edit has.
namespace tavaro::operations {

namespace detail {

inline constexpr Parameter maxCharacters{.name = "--max-characters",
                                         .help = "the length of a caption",
                                         .presence = Presence::optional,
                                         .range = NumberRange{1, 1000, "a length"}};

}

struct CaptionsFromTranscript {
    std::int64_t maxCharacters = CaptionBreaks{}.maxCharacters;
    double breakOnPause = CaptionBreaks{}.breakOnPause;

    static constexpr OperationInfo info{.name = "captions-from-transcript",
                                        .title = "Make Captions",
                                        .help = "make the captions of what is said",
                                        .command = OperationCommand::captions};
    static constexpr std::array parameters{detail::maxCharacters,
                                           Parameter{.name = "--break-on-pause",
                                                     .help = "seconds of silence that end a caption",
                                                     .presence = Presence::optional,
                                                     .range = NumberRange{.most = 3600}}};
    static constexpr auto fields = std::tuple{
        field("maxCharacters", &CaptionsFromTranscript::maxCharacters),
        field("breakOnPause", &CaptionsFromTranscript::breakOnPause),
    };
    bool operator==(CaptionsFromTranscript const&) const = default;
};
static_assert(listsEveryField<CaptionsFromTranscript>);

struct CaptionsFromScript {
    std::string script;              // the text itself
    std::optional<std::string> file; // whose text it is, for sentences
    double start = 0;
    std::optional<double> duration; // to the end of the edit without
    std::int64_t maxCharacters = CaptionBreaks{}.maxCharacters;

    static constexpr OperationInfo info{.name = "captions-from-script",
                                        .title = "Make Captions",
                                        .help = "make them of a text file, evenly spoken",
                                        .command = OperationCommand::captions};
    static constexpr std::array parameters{
        Parameter{.name = "--from-script", .help = "the text"},
        Parameter{.name = "--file", .help = "the name of the text, for messages", .presence = Presence::optional},
        Parameter{.name = "--start",
                  .help = "when the script begins, in seconds of the edit",
                  .presence = Presence::optional,
                  .range = NumberRange{.most = 1e7}},
        Parameter{.name = "--duration",
                  .help = "how long it lasts; to the end of the edit without",
                  .presence = Presence::optional,
                  .range = NumberRange{.least = 0.01, .most = 1e7}},
        detail::maxCharacters};
    static constexpr auto fields = std::tuple{
        field("script", &CaptionsFromScript::script),
        field("file", &CaptionsFromScript::file),
        field("start", &CaptionsFromScript::start),
        field("duration", &CaptionsFromScript::duration),
        field("maxCharacters", &CaptionsFromScript::maxCharacters),
    };
    bool operator==(CaptionsFromScript const&) const = default;
};
static_assert(listsEveryField<CaptionsFromScript>);

struct CaptionsFromSubtitles {
    std::string subtitles;           // the text of a SubRip or WebVTT file
    std::optional<std::string> file; // whose text it is, for sentences

    static constexpr OperationInfo info{.name = "captions-from-subtitles",
                                        .title = "Import Captions",
                                        .help = "take them from a SubRip or WebVTT file",
                                        .command = OperationCommand::captions};
    static constexpr std::array parameters{
        Parameter{.name = "--import", .help = "the text of a SubRip or WebVTT file"},
        Parameter{.name = "--file", .help = "the name of the file, for messages", .presence = Presence::optional}};
    static constexpr auto fields = std::tuple{
        field("subtitles", &CaptionsFromSubtitles::subtitles),
        field("file", &CaptionsFromSubtitles::file),
    };
    bool operator==(CaptionsFromSubtitles const&) const = default;
};
static_assert(listsEveryField<CaptionsFromSubtitles>);

std::string apply(DemoProject& project, CaptionsFromTranscript const& making);
std::string apply(DemoProject& project, CaptionsFromScript const& making);
/// Subtitles have the film's times, in which a title card comes first; what the edit does not show is left out.
std::string apply(DemoProject& project, CaptionsFromSubtitles const& making);

}
