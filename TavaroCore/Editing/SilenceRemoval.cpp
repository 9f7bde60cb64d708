#include <TavaroCore/Editing/SilenceRemoval.h>

#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <vector>

namespace tavaro {

namespace {

std::vector<TimeRange> merged(std::vector<TimeRange> ranges) {
    std::ranges::sort(ranges, {}, &TimeRange::start);
    std::vector<TimeRange> result;
    for (auto const& range : ranges) {
        if (!result.empty() && range.start <= result.back().end()) {
            result.back() = result.back().unionWith(range);
        } else {
            result.push_back(range);
        }
    }
    return result;
}

}

SpansEdited removeAllSilence(DemoProject& project) {
    std::vector<TimeRange> removed;
    for (auto const& silence : project.silences) {
        if (silence.isRemoved && silence.duration > 0) removed.push_back(silence.range());
    }
    SpansEdited result{.count = static_cast<int>(removed.size())};
    std::erase_if(project.silences, [](SilenceSpan const& silence) { return silence.isRemoved; });
    double const before = project.duration();
    auto const spans = merged(std::move(removed));
    for (auto span = spans.rbegin(); span != spans.rend(); ++span) {
        removeTimeRange(project, span->start, span->duration);
    }
    result.seconds = before - project.duration();
    return result;
}

}
