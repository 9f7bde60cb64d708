#include <Tavaro/Model/Privacy/Private/SourceRanges.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr double moment = 0.25; // seconds: lengths of a movie, told and decoded, are no further apart

}

std::vector<TimeRange> joinedRanges(std::vector<TimeRange> ranges) {
    std::ranges::sort(ranges, {}, &TimeRange::start);
    std::vector<TimeRange> joined;
    for (auto const& range : ranges) {
        if (!(range.duration > 0)) continue;
        if (!joined.empty() && range.start <= joined.back().end())
            joined.back() = joined.back().unionWith(range);
        else
            joined.push_back(range);
    }
    return joined;
}

std::vector<TimeRange> outside(TimeRange const& range, std::vector<TimeRange> const& others) {
    std::vector<TimeRange> rest;
    double from = range.start;
    for (auto const& other : others) {
        if (!other.intersects(range)) continue;
        if (other.start > from) rest.push_back({from, other.start - from});
        from = std::max(from, other.end());
    }
    if (from < range.end()) rest.push_back({from, range.end() - from});
    return rest;
}

std::vector<TimeRange> missingRanges(std::vector<TimeRange> const& ranges, double length) {
    auto missing = outside({0, length}, ranges);
    if (ranges.empty()) return missing;
    std::erase_if(missing, [](TimeRange const& range) { return range.duration < moment; });
    return missing;
}

}
