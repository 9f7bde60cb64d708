#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Voice/VoiceoverPlan.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// The script of a project, and the file that it was written to.
struct ScriptListing {
    std::int64_t count = 0;
    std::vector<VoiceoverSegment> lines;
    std::string text; // as `tavaro script` prints it
    std::optional<std::string> path;

    static constexpr auto fields = std::tuple{
        field("count", &ScriptListing::count),
        field("lines", &ScriptListing::lines),
        field("text", &ScriptListing::text),
        field("path", &ScriptListing::path),
    };
    bool operator==(ScriptListing const&) const = default;
};
static_assert(listsEveryField<ScriptListing>);

}
