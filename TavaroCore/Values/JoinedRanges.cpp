#include <TavaroCore/Values/JoinedRanges.h>

#include <algorithm>

namespace tavaro {

std::vector<TimeRange> joined(std::vector<TimeRange> ranges, double gap) {
    std::ranges::sort(ranges, {}, &TimeRange::start);
    std::vector<TimeRange> result;
    for (auto const& range : ranges) {
        if (!result.empty() && range.start <= result.back().end() + gap)
            result.back() = result.back().unionWith(range);
        else
            result.push_back(range);
    }
    return result;
}

}
