#include <TavaroCore/Timeline/Private/LogOnTimeline.h>

#include <TavaroCore/Timeline/RecordingOnTimeline.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace tavaro {

namespace {

// Many clips that each show all of a long log would make a list that no memory holds. No film of a day reaches it.
constexpr std::size_t mostEntries = 5'000'000;

template<class Entry> void sortByTime(std::vector<Entry>& entries) {
    auto const earlier = [](Entry const& a, Entry const& b) { return a.t < b.t; };
    if (!std::is_sorted(entries.begin(), entries.end(), earlier)) {
        std::stable_sort(entries.begin(), entries.end(), earlier);
    }
}

struct NoChange {
    void operator()(auto&, double) const {}
};

/// The entries at each of their output times; `change(entry, outputTime)` sees each before its time is changed.
template<class Entry, class Change = NoChange>
std::vector<Entry> mapped(std::vector<Entry> const& entries, RecordingOnTimeline const& shown, Change change = {}) {
    std::vector<Entry> result;
    result.reserve(std::min(entries.size(), mostEntries));
    shown.forEachShown(entries, [&](Entry const& entry, double at) {
        if (result.size() >= mostEntries) return;
        result.push_back(entry);
        change(result.back(), at);
        result.back().t = at;
    });
    sortByTime(result);
    return result;
}

/// A drag that is shown from `at` on ends where its end is shown next, unless its beginning is shown again before that.
std::optional<double> shownEnd(ClickEvent const& drag, double at, RecordingOnTimeline const& shown) {
    auto const ends = shown.outputTimes(*drag.dragEnd);
    auto const begins = shown.outputTimes(drag.t);
    auto const end = std::ranges::lower_bound(ends, at);
    auto const again = std::ranges::upper_bound(begins, at);
    if (end == ends.end() || (again != begins.end() && *again < *end)) return std::nullopt;
    return *end;
}

std::vector<ClickEvent> mappedClicks(std::vector<ClickEvent> const& clicks, RecordingOnTimeline const& shown) {
    return mapped(clicks, shown, [&](ClickEvent& click, double at) {
        if (click.dragEnd) click.dragEnd = shownEnd(click, at, shown);
    });
}

}

RecordingMetadata logOnTimeline(RecordingMetadata const& recording, RecordingOnTimeline const& shown) {
    RecordingMetadata result;
    result.captureSize = recording.captureSize;
    result.scaleFactor = recording.scaleFactor;
    result.cursorSamples = mapped(recording.cursorSamples, shown);
    result.clicks = mappedClicks(recording.clicks, shown);
    result.keystrokes = mapped(recording.keystrokes, shown);
    for (auto const& span : recording.appSpans) {
        for (auto const& stretch : shown.stretches({span.t, span.duration})) {
            if (result.appSpans.size() >= mostEntries) break;
            result.appSpans.push_back(span);
            result.appSpans.back().t = stretch.range.start;
            result.appSpans.back().duration = stretch.range.duration;
        }
    }
    result.micLevels = recording.micLevels;
    result.health = recording.health;
    sortByTime(result.appSpans);
    return result;
}

}
