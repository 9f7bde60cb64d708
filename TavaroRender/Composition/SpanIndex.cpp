#include <TavaroRender/Composition/Private/SpanIndex.h>

#include <algorithm>

namespace tavaro {

SpanIndex::SpanIndex(std::vector<TimeRange> const& ranges) {
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        if (ranges[i].duration > 0) spans_.push_back({ranges[i], i, ranges[i].end()});
    }
    std::ranges::stable_sort(spans_, {}, [](Span const& span) { return span.range.start; });
    for (std::size_t i = 1; i < spans_.size(); ++i)
        spans_[i].latestEnd = std::max(spans_[i].latestEnd, spans_[i - 1].latestEnd);
}

std::vector<std::size_t> SpanIndex::holding(double time) const {
    std::vector<std::size_t> items;
    auto span = std::ranges::upper_bound(spans_, time, {}, [](Span const& s) { return s.range.start; });
    while (span != spans_.begin() && (--span)->latestEnd > time) {
        if (span->range.contains(time)) items.push_back(span->item);
    }
    std::ranges::sort(items);
    return items;
}

}
