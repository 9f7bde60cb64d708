#include <TavaroCore/Speech/TimelineWords.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double touching = 0.000001; // seconds; output times that close are the same

/// Where the edit shows enough of a word. Stretches that hold more than half of it show it again; of those that hold
/// parts of it the longest counts.
std::vector<TimeRange> visibleRanges(TranscriptWord const& word, RecordingOnTimeline const& shown) {
    std::vector<TimeRange> result;
    if (!(word.end > word.start)) { // no length, so it is shown or it is not
        for (double const time : shown.outputTimes(word.start)) result.push_back({time, 0});
        return result;
    }
    auto const stretches = shown.stretches({word.start, word.duration()});
    auto const longest = std::ranges::max_element(stretches, {}, &RecordingOnTimeline::Stretch::recordedSeconds);
    for (auto stretch = stretches.begin(); stretch != stretches.end(); ++stretch) {
        double const least = word.duration() + (stretch == longest ? -touching : touching);
        if (stretch->recordedSeconds > 0 && 2 * stretch->recordedSeconds >= least) result.push_back(stretch->range);
    }
    return result;
}

}

std::vector<TimelineWord> timelineWords(DemoProject const& project) {
    if (!project.transcript) return {};
    auto const& words = (*project.transcript)->words;
    auto const shown = recordingOnTimeline(project);
    std::vector<TimelineWord> result;
    result.reserve(words.size());
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (!std::isfinite(words[i].start) || !std::isfinite(words[i].end)) continue;
        for (auto const& range : visibleRanges(words[i], shown)) result.push_back({words[i], range, i});
    }
    auto const start = [](TimelineWord const& word) { return word.range.start; };
    if (!std::ranges::is_sorted(result, {}, start)) std::ranges::stable_sort(result, {}, start);
    return result;
}

std::vector<TimeRange> longPauses(std::vector<TimelineWord> const& words, double threshold) {
    std::vector<TimeRange> pauses;
    double spokenUntil = words.empty() ? 0 : words.front().range.end();
    for (auto const& word : words) {
        double const gap = word.range.start - spokenUntil;
        if (gap > threshold) pauses.push_back({spokenUntil, gap});
        spokenUntil = std::max(spokenUntil, word.range.end());
    }
    return pauses;
}

std::vector<TimeRange> longPauses(DemoProject const& project, double threshold) {
    return longPauses(timelineWords(project), threshold);
}

}
