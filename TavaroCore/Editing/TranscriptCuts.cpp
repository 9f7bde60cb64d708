#include <TavaroCore/Editing/Private/TranscriptCuts.h>

#include <TavaroCore/Speech/TimelineWords.h>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace tavaro {

namespace {

constexpr double largestMargin = 0.08; // seconds by which a recognised time may be wrong
constexpr double largestShare = 0.5;   // seconds of a silence that a cut takes

/// The silence that a cut takes at its side when it takes no more than it must; the same stays beside a neighbour.
double margin(double silence) { return std::clamp(silence / 2, 0.0, largestMargin); }

/// The silence that a cut takes when nothing of it should stay.
double share(double silence) { return std::clamp(silence - margin(silence), 0.0, largestShare); }

/// Chosen words that go in one cut, and what is beside them.
struct Run {
    std::size_t first = 0, last = 0;
    double start = 0, end = 0;          // of the words
    double keptUntil = 0;               // the end of the last word before that stays
    double spokenUntil = 0;             // the end of the last word before
    double keptFrom = 0;                // the start of the first word behind that stays
    double spokenFrom = 0;              // the start of the first word behind
    bool isFirst = true, isLast = true; // no word before, none behind
};

TimeRange cutFor(Run const& run, double duration) {
    double before, after;
    double const silenceBefore = run.start - run.spokenUntil, silenceAfter = run.spokenFrom - run.end;
    if (run.isFirst || run.isLast) {
        before = run.isFirst ? std::clamp(run.start, 0.0, largestMargin) : margin(silenceBefore);
        after = run.isLast ? std::clamp(duration - run.end, 0.0, largestMargin) : margin(silenceAfter);
    } else if (silenceBefore <= silenceAfter) {
        before = share(silenceBefore);
        after = margin(silenceAfter);
    } else {
        before = margin(silenceBefore);
        after = share(silenceAfter);
    }
    double const start = std::max(run.start - before, run.keptUntil), end = std::min(run.end + after, run.keptFrom);
    return {start, end - start};
}

}

std::vector<TimeRange> cutsForWords(std::vector<TimelineWord> const& words, std::vector<bool> const& isChosen,
                                    double duration) {
    std::vector<TimeRange> cuts;
    double keptUntil = 0, spokenUntil = 0;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (!isChosen[i]) {
            keptUntil = std::max(keptUntil, words[i].range.end());
            spokenUntil = std::max(spokenUntil, words[i].range.end());
            continue;
        }
        Run run{.first = i, .last = i, .start = words[i].range.start, .end = words[i].range.end()};
        while (run.last + 1 < words.size() && isChosen[run.last + 1] &&
               words[run.last + 1].range.start - run.end <= 2 * largestShare) {
            run.end = std::max(run.end, words[++run.last].range.end());
        }
        std::size_t kept = run.last + 1;
        while (kept < words.size() && isChosen[kept]) ++kept;
        run.isFirst = i == 0;
        run.isLast = run.last + 1 == words.size();
        run.keptUntil = keptUntil;
        run.spokenUntil = spokenUntil;
        run.keptFrom = kept < words.size() ? words[kept].range.start : std::numeric_limits<double>::infinity();
        run.spokenFrom = run.isLast ? duration : words[run.last + 1].range.start;
        if (auto const cut = cutFor(run, duration); cut.duration > 0) cuts.push_back(cut);
        spokenUntil = std::max(spokenUntil, run.end);
        i = run.last;
    }
    return cuts;
}

}
