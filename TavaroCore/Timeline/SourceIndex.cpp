#include <TavaroCore/Timeline/SourceIndex.h>

#include <TavaroCore/Timeline/Timeline.h>

#include <algorithm>
#include <cstddef>
#include <set>

namespace tavaro {

namespace {

/// A clip's span begins or ends.
struct Boundary {
    double source;
    std::size_t clip;
    bool begins;
};

std::vector<Boundary> boundaries(std::vector<VideoClip> const& clips) {
    std::vector<Boundary> result;
    for (std::size_t i = 0; i < clips.size(); ++i) {
        TimeRange const span{clips[i].sourceStart, clips[i].sourceSpan()};
        if (!(span.start < span.end())) continue;
        result.push_back({span.start, i, true});
        result.push_back({span.end(), i, false});
    }
    std::sort(result.begin(), result.end(), [](auto const& a, auto const& b) { return a.source < b.source; });
    return result;
}

}

SourceIndex::SourceIndex(Timeline const& timeline) : timeline_(timeline) {
    std::set<std::size_t> open; // clips whose span holds the source time; the first in the edit places it
    auto const bounds = boundaries(timeline.clips);
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        auto const& [source, clip, begins] = bounds[i];
        if (begins) {
            open.insert(clip);
        } else {
            open.erase(clip);
        }
        if (open.empty() || bounds[i + 1].source <= source) continue;
        auto const* placing = &timeline.clips[*open.begin()];
        if (!pieces_.empty() && pieces_.back().clip == placing && pieces_.back().end == source) {
            pieces_.back().end = bounds[i + 1].source;
        } else {
            pieces_.push_back({source, bounds[i + 1].source, placing});
        }
    }
}

std::optional<double> SourceIndex::timelineTime(double forSource) const {
    auto const after = std::upper_bound(pieces_.begin(), pieces_.end(), forSource,
                                        [](double source, Piece const& piece) { return source < piece.start; });
    if (after != pieces_.begin() && forSource < (after - 1)->end) return (after - 1)->clip->outputTime(forSource);
    return timeline_.endTime(forSource);
}

}
