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

/// Appends what the edit shows of one span; parts that stay end to end stay one.
void appendShown(AppFocusSpan const& span, SourceIndex const& index, std::vector<AppFocusSpan>& result) {
    constexpr double touching = 0.000001;
    double const end = span.t + span.duration;
    auto const& pieces = index.pieces();
    auto piece = std::upper_bound(pieces.begin(), pieces.end(), span.t,
                                  [](double t, SourceIndex::Piece const& p) { return t < p.end; });
    bool continues = false;
    for (; piece != pieces.end() && piece->start < end; ++piece) {
        double const first = piece->clip->outputTime(std::max(piece->start, span.t));
        double const last = piece->clip->outputTime(std::min(piece->end, end));
        if (!(first < last)) continue;
        if (continues && std::abs(result.back().t + result.back().duration - first) <= touching) {
            result.back().duration = last - result.back().t;
            continue;
        }
        result.push_back(span);
        result.back().t = first;
        result.back().duration = last - first;
        continues = true;
    }
}

}

RecordingMetadata onTimeline(RecordingMetadata const& recording, Timeline const& timeline) {
    SourceIndex const index(timeline);
    RecordingMetadata result;
    result.captureSize = recording.captureSize;
    result.scaleFactor = recording.scaleFactor;
    result.cursorSamples = mapped(recording.cursorSamples, index);
    result.clicks = mappedClicks(recording.clicks, index);
    result.keystrokes = mapped(recording.keystrokes, index);
    for (auto const& span : recording.appSpans) appendShown(span, index, result.appSpans);
    result.micLevels = recording.micLevels;
    result.health = recording.health;
    sortByTime(result.cursorSamples);
    sortByTime(result.clicks);
    sortByTime(result.keystrokes);
    sortByTime(result.appSpans);
    return result;
}

}
