#include <TavaroCore/Timeline/RecordingOnTimeline.h>

#include <TavaroCore/Timeline/SourceIndex.h>
#include <TavaroCore/Timeline/Timeline.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

template<class Entry> void sortByTime(std::vector<Entry>& entries) {
    auto const earlier = [](Entry const& a, Entry const& b) { return a.t < b.t; };
    if (!std::is_sorted(entries.begin(), entries.end(), earlier)) {
        std::stable_sort(entries.begin(), entries.end(), earlier);
    }
}

/// The entries that some clip shows, at their output times.
template<class Entry> std::vector<Entry> mapped(std::vector<Entry> const& entries, SourceIndex const& index) {
    std::vector<Entry> result;
    result.reserve(entries.size());
    for (auto const& entry : entries) {
        auto const time = index.timelineTime(entry.t);
        if (!time) continue;
        result.push_back(entry);
        result.back().t = *time;
    }
    return result;
}

std::vector<ClickEvent> mappedClicks(std::vector<ClickEvent> const& clicks, SourceIndex const& index) {
    auto result = mapped(clicks, index);
    for (auto& click : result) {
        if (!click.dragEnd) continue;
        click.dragEnd = index.timelineTime(*click.dragEnd);
        if (click.dragEnd && *click.dragEnd < click.t) click.dragEnd.reset(); // its end is shown before its beginning
    }
    return result;
}

}

std::vector<TimeRange> shownRanges(TimeRange const& recorded, SourceIndex const& index) {
    constexpr double touching = 0.000001;
    auto const& pieces = index.pieces();
    auto piece = std::upper_bound(pieces.begin(), pieces.end(), recorded.start,
                                  [](double t, SourceIndex::Piece const& p) { return t < p.end; });
    std::vector<TimeRange> result;
    for (; piece != pieces.end() && piece->start < recorded.end(); ++piece) {
        double const first = piece->clip->outputTime(std::max(piece->start, recorded.start));
        double const last = piece->clip->outputTime(std::min(piece->end, recorded.end()));
        if (!(first < last)) continue;
        if (!result.empty() && std::abs(result.back().end() - first) <= touching) {
            result.back().duration = last - result.back().start;
        } else {
            result.push_back({first, last - first});
        }
    }
    return result;
}

RecordingMetadata onTimeline(RecordingMetadata const& recording, Timeline const& timeline) {
    SourceIndex const index(timeline);
    RecordingMetadata result;
    result.captureSize = recording.captureSize;
    result.scaleFactor = recording.scaleFactor;
    result.cursorSamples = mapped(recording.cursorSamples, index);
    result.clicks = mappedClicks(recording.clicks, index);
    result.keystrokes = mapped(recording.keystrokes, index);
    for (auto const& span : recording.appSpans) {
        for (auto const& shown : shownRanges({span.t, span.duration}, index)) {
            result.appSpans.push_back(span);
            result.appSpans.back().t = shown.start;
            result.appSpans.back().duration = shown.duration;
        }
    }
    result.micLevels = recording.micLevels;
    result.health = recording.health;
    sortByTime(result.cursorSamples);
    sortByTime(result.clicks);
    sortByTime(result.keystrokes);
    sortByTime(result.appSpans);
    return result;
}

}
