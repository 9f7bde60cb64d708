#pragma once

#include <Tavaro/Model/Privacy/KeptScan.h>

#include <TavaroCore/Privacy/Redaction.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Values/TimeRange.h>

#include <optional>
#include <string>
#include <vector>

namespace tavaro {

class ProjectPackage;
struct DemoProject;

/// Something that a film hides, or that a scan would have hidden, for people and programs.
struct ListedFinding {
    std::string id; // as much of it as names it
    UUID redaction; // the whole of it
    SensitiveKind kind = SensitiveKind::custom;
    std::string masked;
    FindingState state = FindingState::hidden;
    bool isByHand = false;              // somebody hid an area
    std::vector<TimeRange> shown;       // output seconds; empty where the film does not show it
    TimeRange recorded;                 // seconds of its recording
    std::optional<std::string> picture; // of what is around it

    static constexpr auto fields = std::tuple{
        field("id", &ListedFinding::id),           field("redaction", &ListedFinding::redaction),
        field("kind", &ListedFinding::kind),       field("masked", &ListedFinding::masked),
        field("state", &ListedFinding::state),     field("isByHand", &ListedFinding::isByHand),
        field("shown", &ListedFinding::shown),     field("recorded", &ListedFinding::recorded),
        field("picture", &ListedFinding::picture),
    };
    bool operator==(ListedFinding const&) const = default;
};
static_assert(listsEveryField<ListedFinding>);

/// By the times at which the film shows them, then what it does not show.
std::vector<ListedFinding> listedFindings(DemoProject const& project);

/// Writes "ID.png" into the folder for each: what is around it, with everything that is hidden then covered. Makes the
/// folder where there is none, and notes the names. What no picture can be made of goes without. Throws `FileError` and
/// `MediaError`.
void writeFindingPictures(std::vector<ListedFinding>& findings, DemoProject const& project,
                          ProjectPackage const& package, std::string const& folder);

/// "3 API keys and 1 email"; nothing for none.
std::string countedKinds(std::vector<SensitiveKind> const& kinds);

}
