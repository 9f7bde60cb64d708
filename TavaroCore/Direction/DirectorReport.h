#pragma once

#include <TavaroCore/Records/Fields.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tavaro {

/// What Auto Polish did and found.
struct DirectorReport {
    std::int64_t zoomsAdded = 0;
    std::int64_t clicksDetected = 0;
    std::int64_t cursorSamplesSmoothed = 0;
    std::int64_t silencesFound = 0;
    double silenceSecondsRemovable = 0;
    std::int64_t overlaysAdded = 0;
    std::int64_t captionCues = 0;

    /// The report for the person at the screen, a line for each thing that happened.
    std::vector<std::string> summaryLines() const;

    static constexpr auto fields = std::tuple{
        field("zoomsAdded", &DirectorReport::zoomsAdded),
        field("clicksDetected", &DirectorReport::clicksDetected),
        field("cursorSamplesSmoothed", &DirectorReport::cursorSamplesSmoothed),
        field("silencesFound", &DirectorReport::silencesFound),
        field("silenceSecondsRemovable", &DirectorReport::silenceSecondsRemovable),
        field("overlaysAdded", &DirectorReport::overlaysAdded),
        field("captionCues", &DirectorReport::captionCues),
    };
    bool operator==(DirectorReport const&) const = default;
};
static_assert(listsEveryField<DirectorReport>);

}
