#include <TavaroCore/Direction/Private/SilenceDetector.h>

#include <TavaroCore/Audio/AudioTrack.h>
#include <TavaroCore/Recording/RecordingMetadata.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double rounding = 1e-6; // seconds; times that were moved by an edit are off by less

}

std::vector<SilenceSpan> SilenceDetector::detect(RecordingMetadata const& recording, double duration) const {
    if (!(duration > 0)) return {};
    return spans(recording.micLevels.empty() ? std::vector<TimeRange>{{0, duration}}
                                             : quietRanges(recording.micLevels, duration),
                 activityTimes(recording, pointerTravel));
}

std::vector<SilenceSpan> SilenceDetector::spans(std::vector<TimeRange> const& quiet,
                                                std::vector<double> const& activity) const {
    std::vector<SilenceSpan> spans;
    auto const offer = [&](double from, double gap) {
        if (gap < minimumDuration - rounding) return;
        spans.push_back({.start = from + padding * 0.5, .duration = gap - padding, .isRemoved = true});
    };
    for (auto const& range : quiet) {
        double from = range.start;
        auto next = std::upper_bound(activity.begin(), activity.end(), range.start);
        for (; next != activity.end() && *next < range.end(); ++next) {
            offer(from, *next - padding - from);
            from = *next + padding;
        }
        offer(from, range.end() - from);
    }
    return spans;
}

std::vector<TimeRange> SilenceDetector::quietRanges(std::span<float const> levels, double duration) const {
    std::vector<TimeRange> ranges;
    if (levels.empty()) return ranges;
    double const bucket = duration / static_cast<double>(levels.size());
    auto const isQuiet = [&](float level) { return level < threshold; };
    auto const index = [&](auto position) { return static_cast<double>(position - levels.begin()); };
    for (auto at = levels.begin(); at != levels.end();) {
        auto const first = std::find_if(at, levels.end(), isQuiet);
        if (first == levels.end()) break;
        at = std::find_if_not(first, levels.end(), isQuiet);
        ranges.push_back({bucket * index(first), std::max(bucket * (index(at) - index(first)), 0.0)});
    }
    return ranges;
}

std::vector<double> SilenceDetector::activityTimes(RecordingMetadata const& recording, double minTravel) {
    std::vector<double> times;
    for (auto const& click : recording.clicks) times.push_back(click.t);
    for (auto const& stroke : recording.keystrokes) times.push_back(stroke.t);
    auto const& samples = recording.cursorSamples;
    for (std::size_t anchor = 0, i = 1; i < samples.size(); ++i) {
        auto const& from = samples[anchor].position;
        auto const& to = samples[i].position;
        if (!(std::hypot(to.x - from.x, to.y - from.y) > minTravel)) continue;
        times.push_back(samples[i].t);
        anchor = i;
    }
    std::stable_sort(times.begin(), times.end());
    return times;
}

bool SilenceDetector::containsSpeech(std::span<float const> levels, double minimumSpeech) const {
    auto const loud = std::count_if(levels.begin(), levels.end(), [&](float level) { return level >= threshold; });
    return minimumSpeech <= bucketSeconds * static_cast<double>(loud);
}

}
