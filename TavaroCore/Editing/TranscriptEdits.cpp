#include <TavaroCore/Editing/TranscriptEdits.h>

#include <TavaroCore/Editing/Private/TranscriptCuts.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Speech/TimelineWords.h>
#include <TavaroCore/Values/JoinedRanges.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double shortestRemoved = 0.01;   // seconds; a merged range up to that stays
constexpr double shortestTightened = 0.05; // seconds; a pause that would lose no more stays

/// Ascending, apart from each other.
std::vector<TimeRange> merged(std::vector<TimeRange> ranges) {
    std::erase_if(ranges, [](TimeRange const& range) {
        return !(range.duration > 0) || !std::isfinite(range.start) || !std::isfinite(range.duration);
    });
    return joined(std::move(ranges), 0);
}

template<class Predicate> std::vector<bool> chosenOf(std::vector<TimelineWord> const& words, Predicate isChosen) {
    std::vector<bool> result(words.size());
    std::transform(words.begin(), words.end(), result.begin(),
                   [&](TimelineWord const& word) { return isChosen(word.word); });
    return result;
}

TranscriptCut cutWords(DemoProject& project, std::vector<TimelineWord> const& words, std::vector<bool> const& chosen) {
    auto const count = static_cast<std::size_t>(std::count(chosen.begin(), chosen.end(), true));
    return {count, removeRanges(project, cutsForWords(words, chosen, project.duration()))};
}

bool isFiller(TranscriptWord const& word) { return word.isFiller(); }

}

double removeRanges(DemoProject& project, std::vector<TimeRange> ranges) {
    double const before = project.duration();
    auto const removed = merged(std::move(ranges));
    for (auto range = removed.rbegin(); range != removed.rend(); ++range) {
        if (range->duration > shortestRemoved) removeTimeRange(project, range->start, range->duration);
    }
    return before - project.duration();
}

TranscriptCut tightenPauses(DemoProject& project, PauseTightening const& tightening) {
    std::vector<TimeRange> cuts;
    double const keep = std::max(tightening.keep, 0.0);
    for (auto const& pause : longPauses(project, tightening.threshold)) {
        double const surplus = pause.duration - keep;
        if (surplus > shortestTightened) cuts.push_back({pause.start + keep / 2, surplus});
    }
    auto const count = cuts.size();
    return {count, removeRanges(project, std::move(cuts))};
}

TranscriptCut deleteWords(DemoProject& project, std::span<UUID const> words) {
    std::vector<UUID> wanted(words.begin(), words.end());
    std::sort(wanted.begin(), wanted.end());
    auto const shown = timelineWords(project);
    return cutWords(project, shown, chosenOf(shown, [&](TranscriptWord const& word) {
                        return std::binary_search(wanted.begin(), wanted.end(), word.id);
                    }));
}

std::vector<TimeRange> fillerRanges(DemoProject const& project) {
    auto const shown = timelineWords(project);
    return cutsForWords(shown, chosenOf(shown, isFiller), project.duration());
}

TranscriptCut removeFillers(DemoProject& project) {
    auto const shown = timelineWords(project);
    return cutWords(project, shown, chosenOf(shown, isFiller));
}

}
