#include <TavaroCore/Direction/Private/Beats.h>

#include <TavaroCore/Direction/Private/SilenceDetector.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroCore/Speech/TimelineWords.h>
#include <TavaroCore/Values/JoinedRanges.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr double pointerTravel = 0.02; // of the frame; what a hand does while its owner talks is no work
constexpr double workPause = 1.6;      // actions this close belong to one piece of work
constexpr double workBefore = 0.6;     // the pointer is on its way, the eye follows
constexpr double workAfter = 0.8;      // the last action is seen
constexpr double resultSeconds = 2.4;  // a change of the screen is looked at
constexpr double resultDelay = 1.5;    // it comes this soon after the work that caused it
constexpr double breathPause = 0.9;    // words this close belong to one talk
constexpr double shortestTalk = 0.7;   // a cough or a key is no talk
constexpr float speechLevel = 0.018f;

using Ranges = std::vector<TimeRange>;

/// Where somebody talks, from the levels: what is not quiet.
Ranges loudRanges(DemoProject const& project) {
    auto const& levels = project.metadata->micLevels;
    if (levels.empty()) return {};
    double const seconds = recordedSeconds(project);
    SilenceDetector const detector{.threshold = speechLevel};
    auto const recording = recordingOnTimeline(project);
    Ranges result;
    double from = 0;
    auto const take = [&](double until) {
        for (auto const& shown : recording.stretches({from, until - from})) result.push_back(shown.range);
    };
    for (auto const& quiet : detector.quietRanges(levels, seconds)) {
        if (quiet.start > from) take(quiet.start);
        from = quiet.end();
    }
    if (seconds > from) take(seconds);
    return result;
}

Ranges talk(DemoProject const& project) {
    Ranges spoken;
    for (auto const& word : timelineWords(project)) spoken.push_back(word.range);
    if (!project.transcript) spoken = loudRanges(project);
    auto result = joined(std::move(spoken), breathPause);
    std::erase_if(result, [](TimeRange const& range) { return range.duration < shortestTalk; });
    return result;
}

Ranges work(RecordingMetadata const& shownLog) {
    Ranges result;
    for (double const time : SilenceDetector::activityTimes(shownLog, pointerTravel)) {
        result.push_back({time - workBefore, workBefore + workAfter});
    }
    return joined(std::move(result), std::max(workPause - workBefore - workAfter, 0.0));
}

/// Output times of changes of the screen.
std::vector<double> changes(DemoProject const& project) {
    std::vector<double> result;
    auto const recording = recordingOnTimeline(project);
    for (double const source : project.screenSceneChanges.value_or(std::vector<double>{})) {
        for (double const time : recording.outputTimes(source)) result.push_back(time);
    }
    std::sort(result.begin(), result.end());
    return result;
}

/// When the screen is looked at because it changed: from the end of the work that caused it, or of its own accord.
Ranges results(Ranges const& work, std::vector<double> const& changes) {
    Ranges result;
    for (double const change : changes) result.push_back({change, resultSeconds});
    for (auto const& piece : work) {
        auto const change = std::lower_bound(changes.begin(), changes.end(), piece.end() - resultDelay);
        if (change == changes.end() || *change > piece.end() + resultDelay) continue;
        result.push_back({piece.end(), std::max(*change, piece.end()) + resultSeconds - piece.end()});
    }
    return result;
}

/// Answers whether ascending ranges hold a time, for times that ascend.
class Walk {
public:
    explicit Walk(Ranges const& ranges) : ranges_(ranges) {}
    bool holds(double time) {
        while (at_ < ranges_.size() && ranges_[at_].end() <= time) ++at_;
        return at_ < ranges_.size() && ranges_[at_].contains(time);
    }

private:
    Ranges const& ranges_;
    std::size_t at_ = 0;
};

void append(std::vector<Beat>& beats, BeatKind kind, TimeRange const& range) {
    if (!beats.empty() && beats.back().kind == kind) {
        beats.back().range = beats.back().range.unionWith(range);
    } else {
        beats.push_back({kind, range});
    }
}

/// Talk before the first and after the last work has names of its own.
void nameEnds(std::vector<Beat>& beats) {
    if (beats.size() < 2) return;
    if (beats.front().kind == BeatKind::explaining) beats.front().kind = BeatKind::intro;
    if (beats.back().kind == BeatKind::explaining) beats.back().kind = BeatKind::outro;
}

}

std::vector<Beat> beats(DemoProject const& project, RecordingMetadata const& shownLog) {
    double const duration = project.duration();
    if (!(duration > 0)) return {};
    auto const working = work(shownLog);
    auto const looking = joined(results(working, changes(project)), 0);
    auto const talking = talk(project);
    std::vector<double> bounds{0, duration};
    for (auto const* ranges : {&working, &looking, &talking}) {
        for (auto const& range : *ranges) {
            for (double const bound : {range.start, range.end()}) {
                if (bound > 0 && bound < duration) bounds.push_back(bound);
            }
        }
    }
    std::sort(bounds.begin(), bounds.end());
    bounds.erase(std::unique(bounds.begin(), bounds.end()), bounds.end());
    std::vector<Beat> result;
    Walk worked(working), looked(looking), talked(talking);
    for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
        double const from = bounds[i];
        bool const works = worked.holds(from), looks = looked.holds(from), talks = talked.holds(from);
        bool const isSilent = !works && !looks && !talks;
        if (isSilent && result.empty()) continue; // until the first beat, which begins at 0
        auto const kind = works      ? BeatKind::doing
                          : looks    ? BeatKind::result
                          : isSilent ? result.back().kind
                                     : BeatKind::explaining;
        double const start = result.empty() ? 0 : from;
        append(result, kind, {start, bounds[i + 1] - start});
    }
    if (result.empty()) result.push_back({BeatKind::explaining, {0, duration}});
    nameEnds(result);
    return result;
}

}
