#include <TavaroCore/Timeline/RecordingOnTimeline.h>

#include <cmath>
#include <limits>
#include <span>

namespace tavaro {

namespace {

constexpr double touching = 0.000001; // seconds; times that close are the same

/// Sets the latest ends of a range of spans, and returns that of all of it.
template<class Span> double setLatestEnds(std::span<Span> spans) {
    if (spans.empty()) return -std::numeric_limits<double>::infinity();
    auto const middle = spans.size() / 2;
    auto& root = spans[middle];
    root.latestEnd = std::max({root.end, setLatestEnds(spans.first(middle)), setLatestEnds(spans.subspan(middle + 1))});
    return root.latestEnd;
}

/// The spans that end after `from` and begin before `to`.
template<class Span, class Visit>
void forEachBetween(std::span<Span const> spans, double from, double to, Visit&& visit) {
    if (spans.empty()) return;
    auto const middle = spans.size() / 2;
    auto const& root = spans[middle];
    if (!(root.latestEnd > from)) return;
    forEachBetween(spans.first(middle), from, to, visit);
    if (!(root.start < to)) return;
    if (root.end > from) visit(root);
    forEachBetween(spans.subspan(middle + 1), from, to, visit);
}

bool areInOrder(std::vector<VideoClip> const& clips) {
    for (std::size_t i = 0; i < clips.size(); ++i) {
        if (!(clips[i].start < clips[i].end())) return false;
        if (i > 0 && !(clips[i - 1].start <= clips[i].start && clips[i - 1].end() <= clips[i].end())) return false;
    }
    return true;
}

}

RecordingOnTimeline::RecordingOnTimeline(Timeline const& timeline, std::string_view asset)
    : timeline_(timeline)
    , asset_(asset)
    , isInOrder_(areInOrder(timeline.clips)) {
    for (std::size_t i = 0; i < timeline.clips.size(); ++i) {
        auto const& clip = timeline.clips[i];
        TimeRange const span{clip.sourceStart, clip.sourceSpan()};
        if (!isShownBy(clip) || !(span.start < span.end())) continue;
        clips_.push_back(i);
        spans_.push_back({.start = span.start, .end = span.end(), .clip = i});
    }
    std::ranges::stable_sort(spans_, {}, &Span::start);
    setLatestEnds(std::span(spans_));
}

VideoClip const* RecordingOnTimeline::clip(double at) const {
    auto const& clips = timeline_.clips;
    auto const* shown = static_cast<VideoClip const*>(nullptr);
    if (isInOrder_) {
        auto const found = std::ranges::partition_point(clips, [&](VideoClip const& c) { return c.end() <= at; });
        if (found != clips.end() && found->range().contains(at)) shown = &*found;
    }
    if (!shown) shown = timeline_.clip(at); // also the end of the last clip
    return shown && isShownBy(*shown) ? shown : nullptr;
}

std::optional<double> RecordingOnTimeline::recordedTime(double at) const {
    auto const* shown = clip(at);
    if (!shown) return std::nullopt;
    return shown->sourceStart + (std::min(at, shown->end()) - shown->start) * shown->speed;
}

std::optional<double> RecordingOnTimeline::timeIn(VideoClip const& clip, double recorded) const {
    double const end = clip.sourceStart + clip.sourceSpan();
    if (TimeRange{clip.sourceStart, clip.sourceSpan()}.contains(recorded)) return clip.outputTime(recorded);
    if (!isLast(clip) || !(std::abs(recorded - end) <= touching)) return std::nullopt;
    return std::min(clip.outputTime(recorded), clip.end());
}

std::vector<double> RecordingOnTimeline::outputTimes(double recorded) const {
    std::vector<double> times;
    auto const add = [&](Span const& span) {
        if (auto const time = timeIn(timeline_.clips[span.clip], recorded)) times.push_back(*time);
    };
    forEachBetween(std::span<Span const>(spans_), recorded - 2 * touching, recorded + 2 * touching, add);
    std::ranges::sort(times);
    return times;
}

void RecordingOnTimeline::forEachClip(TimeRange const& recorded,
                                      FunctionRef<void(VideoClip const&, TimeRange const&)> visit) const {
    forEachBetween(std::span<Span const>(spans_), recorded.start, recorded.end(), [&](Span const& span) {
        double const from = std::max(span.start, recorded.start);
        visit(timeline_.clips[span.clip], {from, std::min(span.end, recorded.end()) - from});
    });
}

std::vector<RecordingOnTimeline::Stretch> RecordingOnTimeline::stretches(TimeRange const& recorded) const {
    struct Part {
        TimeRange range; // output seconds
        TimeRange recorded;
    };
    std::vector<Part> parts;
    forEachClip(recorded, [&](VideoClip const& clip, TimeRange const& part) {
        double const first = clip.outputTime(part.start), last = clip.outputTime(part.end());
        if (first < last) parts.push_back({{first, last - first}, part});
    });
    std::ranges::stable_sort(parts, {}, [](Part const& part) { return part.range.start; });
    std::vector<Stretch> result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        bool const goesOn = i > 0 && std::abs(parts[i - 1].range.end() - parts[i].range.start) <= touching &&
                            parts[i].recorded.start >= parts[i - 1].recorded.end() - touching;
        if (!goesOn) {
            result.push_back({parts[i].range, parts[i].recorded.duration});
            continue;
        }
        result.back().range.duration = parts[i].range.end() - result.back().range.start;
        result.back().recordedSeconds += parts[i].recorded.duration;
    }
    return result;
}

}
