#pragma once

#include <TavaroCore/Records/JSONText.h>

#include <cstddef>
#include <string>
#include <vector>

namespace tavaro {

struct DemoProject;

/// The project as agents see it: the document's JSON without what they have no use for, and with "duration".
struct ProjectView {
    /// A list that is not whole.
    struct Shortened {
        std::string path;
        std::size_t shown = 0; // the first of
        std::size_t total = 0;
    };

    JSONText json;
    std::vector<Shortened> shortened;

    /// What is not whole, as sentences with a blank before each; empty where everything is.
    std::string leftOut() const;
};

struct ViewLimits {
    std::size_t events = 500;                                // of each kind
    std::size_t bytes = (std::size_t{9} << 20) - (1U << 16); // of the JSON, with room for the answer around it
};

/// Costs about writing the document without the pointer's path. Lists of events are shortened first where the limit
/// needs it, then others, the longest first. Throws `MCPToolError` where texts alone pass it.
ProjectView viewOf(DemoProject const& project, ViewLimits const& limits = {});

}
