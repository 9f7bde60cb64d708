#pragma once

#include <TavaroCore/Records/Fields.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

class ProjectPackage;
struct DemoProject;
struct GeneratedVoiceover;
struct VoiceoverRequest;

/// A line of the narration as programs read it.
struct ListedLine {
    std::int64_t number = 0; // from 1
    std::string text;
    double start = 0; // seconds of the edit
    double end = 0;
    std::optional<double> anchor;
    bool isSpoken = false;
    std::optional<std::string> failure; // why it is not

    static constexpr auto fields = std::tuple{
        field("number", &ListedLine::number),   field("text", &ListedLine::text),
        field("start", &ListedLine::start),     field("end", &ListedLine::end),
        field("anchor", &ListedLine::anchor),   field("isSpoken", &ListedLine::isSpoken),
        field("failure", &ListedLine::failure),
    };
    bool operator==(ListedLine const&) const = default;
};
static_assert(listsEveryField<ListedLine>);

/// What came of speaking a narration.
struct VoiceoverListing {
    std::string voice; // its id
    std::string voiceName;
    std::int64_t asked = 0;       // lines of this run
    std::int64_t spoken = 0;      // of them
    std::int64_t newlySpoken = 0; // sounds; the others were there already
    std::int64_t unspoken = 0;
    std::optional<std::string> stopped; // why those that are left were not begun
    bool isCancelled = false;
    double duration = 0; // of the edit, with frames that are held
    std::vector<ListedLine> lines;

    static constexpr auto fields = std::tuple{
        field("voice", &VoiceoverListing::voice),
        field("voiceName", &VoiceoverListing::voiceName),
        field("asked", &VoiceoverListing::asked),
        field("spoken", &VoiceoverListing::spoken),
        field("newlySpoken", &VoiceoverListing::newlySpoken),
        field("unspoken", &VoiceoverListing::unspoken),
        field("stopped", &VoiceoverListing::stopped),
        field("isCancelled", &VoiceoverListing::isCancelled),
        field("duration", &VoiceoverListing::duration),
        field("lines", &VoiceoverListing::lines),
    };
    bool operator==(VoiceoverListing const&) const = default;
};
static_assert(listsEveryField<VoiceoverListing>);

/// Of the document that has taken the lines in.
VoiceoverListing listingOf(DemoProject const& project, GeneratedVoiceover const& generated);

/// What speaking would cost; lines that were spoken before cost nothing.
struct VoiceoverCost {
    std::string voice; // its id
    std::int64_t lines = 0;
    std::int64_t characters = 0;
    bool isPaid = false; // by the user's account with a service

    static constexpr auto fields = std::tuple{
        field("voice", &VoiceoverCost::voice),
        field("lines", &VoiceoverCost::lines),
        field("characters", &VoiceoverCost::characters),
        field("isPaid", &VoiceoverCost::isPaid),
    };
    bool operator==(VoiceoverCost const&) const = default;
};
static_assert(listsEveryField<VoiceoverCost>);

/// Asks the engines which voice it would be, which may take a moment.
VoiceoverCost voiceoverCost(ProjectPackage const& package, VoiceoverRequest const& request);

}
