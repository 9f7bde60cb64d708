#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tavaro {

struct PlacedLine;

/// Where lines of a column end at most, and whether that is where its window does: then several of them do.
struct RightEdge {
    int furthest = 0;
    bool isWindows = false;

    RightEdge(std::span<PlacedLine const> lines, std::vector<std::size_t> const& column);
    bool isReachedBy(PlacedLine const& line) const;
};

/// Whether the first may go on in the second, which is the next of its column.
bool wraps(PlacedLine const& above, PlacedLine const& below, RightEdge const& edge);

}
