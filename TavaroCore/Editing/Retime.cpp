#include <TavaroCore/Editing/Private/Retime.h>

#include <TavaroCore/Editing/AudioSplits.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Project/DemoProject.h>

namespace tavaro {

namespace {

constexpr double edgeTolerance = 0.000001; // seconds

}

void retime(DemoProject& project, TimeRange const& range, double rate) {
    if (rate == 1 || !(range.duration > shortestSpan)) return;
    auto& timeline = project.timeline;
    timeline.split(range.start);
    timeline.split(range.end());
    for (auto& clip : timeline.clips) {
        if (clip.start < range.start - edgeTolerance || clip.end() > range.end() + edgeTolerance) continue;
        clip.speed *= rate;
        clip.duration /= rate;
    }
    timeline.closeGaps();
    splitAudio(project, range.start, AudioReach::all);
    splitAudio(project, range.end(), AudioReach::all);
    timeWarp(project, range, 1 / rate, rate);
}

}
