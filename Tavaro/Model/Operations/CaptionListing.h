#pragma once

#include <TavaroCore/Captions/CaptionTrack.h>
#include <TavaroCore/Records/Fields.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// The captions of a project, and the file that they were written to.
struct CaptionListing {
    std::int64_t count = 0;
    std::vector<CaptionCue> cues;
    std::optional<std::string> path;

    static constexpr auto fields = std::tuple{
        field("count", &CaptionListing::count),
        field("cues", &CaptionListing::cues),
        field("path", &CaptionListing::path),
    };
    bool operator==(CaptionListing const&) const = default;
};
static_assert(listsEveryField<CaptionListing>);

}
