#pragma once

#include <TavaroCore/Direction/DirectorReport.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Values/Geometry.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// What came of making a project.
struct MadeProject {
    std::string path;
    double duration = 0; // seconds
    Size2 sourceSize;    // pixels
    std::int64_t clicks = 0;
    std::int64_t keystrokes = 0;
    std::optional<std::int64_t> droppedFrames;      // of a recording
    std::optional<DirectorReport> report;           // when it was polished
    std::optional<std::vector<std::string>> limits; // of a recording: sentences, what its desktop could not give

    static constexpr auto fields = std::tuple{
        field("path", &MadeProject::path),
        field("duration", &MadeProject::duration),
        field("sourceSize", &MadeProject::sourceSize),
        field("clicks", &MadeProject::clicks),
        field("keystrokes", &MadeProject::keystrokes),
        field("droppedFrames", &MadeProject::droppedFrames),
        field("report", &MadeProject::report),
        field("limits", &MadeProject::limits),
    };
};
static_assert(listsEveryField<MadeProject>);

}
