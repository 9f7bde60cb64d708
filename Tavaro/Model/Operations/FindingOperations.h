#pragma once

#include <Tavaro/Model/Operations/OperationInfo.h>

#include <TavaroCore/Records/Fields.h>

#include <array>
#include <string>
#include <vector>

/// The operations on what the film hides: what a scan of the picture found, by ids or their beginnings, by kinds
/// ("apiKey"), or "all" of it; and areas that somebody hides.
namespace tavaro {

struct DemoProject;

namespace operations {

struct AcceptFindings {
    std::vector<std::string> findings;

    static constexpr OperationInfo info{.name = "accept-findings",
                                        .title = "Accept Findings",
                                        .help =
                                            "Hides private text that a scan found, and leaves it so in later scans"};
    static constexpr std::array parameters{
        Parameter{.name = "FINDING", .help = "an id or its beginning, a kind as apiKey, or all"}};
    static constexpr auto fields = std::tuple{field("findings", &AcceptFindings::findings)};
    bool operator==(AcceptFindings const&) const = default;
};
static_assert(listsEveryField<AcceptFindings>);

struct RejectFindings {
    std::vector<std::string> findings;

    static constexpr OperationInfo info{.name = "reject-findings",
                                        .title = "Reject Findings",
                                        .help =
                                            "Shows what a scan took for private text, also where later scans find it"};
    static constexpr std::array parameters{
        Parameter{.name = "FINDING", .help = "an id or its beginning, a kind as apiKey, or all"}};
    static constexpr auto fields = std::tuple{field("findings", &RejectFindings::findings)};
    bool operator==(RejectFindings const&) const = default;
};
static_assert(listsEveryField<RejectFindings>);

struct HideArea {
    double start = 0;
    double end = 0;
    double x = 0; // pixels of the recording, from its top left
    double y = 0;
    double width = 0;
    double height = 0;
    bool isBlurred = false;

    static constexpr OperationInfo info{
        .name = "hide-area", .title = "Hide Area", .help = "Covers an area of the recording for some time"};
    static constexpr NumberRange pixels{0, 65'536, "a number of pixels"};
    static constexpr NumberRange side{1, 65'536, "a number of pixels"};
    static constexpr std::array parameters{
        Parameter{.name = "FROM", .help = "when it begins, in seconds", .range = NumberRange{}},
        Parameter{.name = "TO", .help = "when it ends, in seconds", .range = NumberRange{}},
        Parameter{.name = "X", .help = "its left edge, in pixels of the recording", .range = pixels},
        Parameter{.name = "Y", .help = "its upper edge", .range = pixels},
        Parameter{.name = "WIDTH", .help = "how wide it is", .range = side},
        Parameter{.name = "HEIGHT", .help = "how high it is", .range = side},
        Parameter{.name = "--blur", .help = "blur it instead of covering it", .presence = Presence::optional}};
    static constexpr auto fields = std::tuple{
        field("start", &HideArea::start),
        field("end", &HideArea::end),
        field("x", &HideArea::x),
        field("y", &HideArea::y),
        field("width", &HideArea::width),
        field("height", &HideArea::height),
        field("isBlurred", &HideArea::isBlurred),
    };
    bool operator==(HideArea const&) const = default;
};
static_assert(listsEveryField<HideArea>);

std::string apply(DemoProject& project, AcceptFindings const& acceptance);
std::string apply(DemoProject& project, RejectFindings const& rejection);
/// The area of the picture that the recording shows then, wherever the film shows that moment.
std::string apply(DemoProject& project, HideArea const& area);

}

}
