#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include <TavaroCore/Values/TimeRange.h>

namespace tavaro {

/// Finds the items of a list whose ranges hold a time, without a walk over all of them.
class SpanIndex {
public:
    /// One range an item.
    explicit SpanIndex(std::vector<TimeRange> const& ranges);

    /// Indices of the items that hold the time (the end is excluded), ascending.
    std::vector<std::size_t> holding(double time) const;

private:
    struct Span {
        TimeRange range;
        std::size_t item = 0;
        double latestEnd = 0; // of this span and those before it
    };
    std::vector<Span> spans_; // ascending in start
};

}
