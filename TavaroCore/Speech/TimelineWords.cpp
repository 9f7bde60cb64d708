#include <TavaroCore/Speech/TimelineWords.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Timeline/SourceIndex.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace tavaro {

namespace {

constexpr double touching = 0.000001; // seconds; output times that close are the same

/// Parts of a word that play one after the other.
struct Run {
    double sourceSeconds = 0;
    TimeRange range;
};

/// What the edit shows of a word, when that is enough of it.
std::optional<TimeRange> visibleRange(TranscriptWord const& word, SourceIndex const& index) {
    if (!(word.end > word.start)) { // no length, so it is shown or it is not
        auto const time = index.timelineTime(word.start);
        return time ? std::optional(TimeRange{*time, 0}) : std::nullopt;
    }
    Run longest, run;
    auto const& pieces = index.pieces();
    auto piece = std::upper_bound(pieces.begin(), pieces.end(), word.start,
                                  [](double t, SourceIndex::Piece const& p) { return t < p.end; });
    for (; piece != pieces.end() && piece->start < word.end; ++piece) {
        double const from = std::max(piece->start, word.start), to = std::min(piece->end, word.end);
        double const first = piece->clip->outputTime(from), last = piece->clip->outputTime(to);
        if (run.sourceSeconds > 0 && std::abs(run.range.end() - first) <= touching) {
            run.range.duration = last - run.range.start;
            run.sourceSeconds += to - from;
        } else {
            run = {to - from, {first, last - first}};
        }
        if (run.sourceSeconds > longest.sourceSeconds) longest = run;
    }
    bool const isEnough = longest.sourceSeconds > 0 && 2 * longest.sourceSeconds >= word.duration() - touching;
    return isEnough ? std::optional(longest.range) : std::nullopt;
}

}

std::vector<TimelineWord> timelineWords(DemoProject const& project) {
    if (!project.transcript) return {};
    auto const& words = (*project.transcript)->words;
    SourceIndex const index(project.timeline);
    std::vector<TimelineWord> result;
    result.reserve(words.size());
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (!std::isfinite(words[i].start) || !std::isfinite(words[i].end)) continue;
        if (auto const range = visibleRange(words[i], index)) result.push_back({words[i], *range, i});
    }
    std::stable_sort(result.begin(), result.end(),
                     [](TimelineWord const& a, TimelineWord const& b) { return a.range.start < b.range.start; });
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
