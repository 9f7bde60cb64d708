#include <TavaroCore/Editing/RangeEdits.h>

#include <TavaroCore/Editing/AudioSplits.h>
#include <TavaroCore/Editing/Private/EditError.h>
#include <TavaroCore/Editing/Private/PictureRange.h>
#include <TavaroCore/Editing/Private/Retime.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace tavaro {

namespace {

constexpr double edgeTolerance = 0.000001; // seconds

void requireFinite(std::initializer_list<double> numbers) {
    for (double const number : numbers) {
        if (std::isfinite(number)) continue;
        throw EditError(EditError::Kind::badNumber, "The edit cannot be made: its times and rates have to be numbers.");
    }
}

/// What the range shows of the picture, in the times that the edit works in.
TimeRange shownRange(DemoProject& project, TimeRange const& range) {
    auto const picture = pictureRange(project, range);
    double const end = std::min(picture.end(), project.duration());
    return {picture.start, std::max(end - picture.start, 0.0)};
}

[[noreturn]] void throwNothingShown() {
    throw EditError(EditError::Kind::nothingShown, "The edit cannot be made: the video shows nothing at that time.");
}

/// The clip that holds the frame on show at `at`.
VideoClip heldFrame(Timeline const& timeline, double at, double duration) {
    auto const* shown = timeline.clip(at);
    if (!shown) throwNothingShown();
    return {.asset = shown->asset,
            .start = at,
            .sourceStart = *timeline.sourceTime(at),
            .duration = duration,
            .speed = 0,
            .isMuted = shown->isMuted};
}

}

void keepTimeRange(DemoProject& project, TimeRange const& range) {
    requireFinite({range.start, range.duration});
    auto edited = project;
    auto const kept = shownRange(edited, range);
    if (!(kept.duration > shortestSpan)) throwNothingShown();
    removeTimeRange(edited, kept.end(), edited.duration() - kept.end());
    removeTimeRange(edited, 0, kept.start);
    project = std::move(edited);
}

void changeSpeed(DemoProject& project, TimeRange const& range, double rate) {
    requireFinite({range.start, range.duration, rate});
    retime(project, shownRange(project, range), std::clamp(rate, slowestRate, fastestRate));
}

void insertTime(DemoProject& project, double at, double duration) {
    requireFinite({at, duration});
    if (!(duration >= shortestSpan)) return;
    auto edited = project;
    auto& timeline = edited.timeline;
    double const place = pictureRange(edited, {at, 0}).start;
    if (at < 0) throwNothingShown();
    auto const hold = heldFrame(timeline, place, duration);
    timeline.split(place);
    auto const next = std::find_if(timeline.clips.begin(), timeline.clips.end(),
                                   [&](VideoClip const& clip) { return clip.start >= place - edgeTolerance; });
    timeline.clips.insert(next, hold);
    timeline.closeGaps();
    splitAudio(edited, place, AudioReach::recorded);
    rippleInsert(edited, place, duration);
    project = std::move(edited);
}

}
