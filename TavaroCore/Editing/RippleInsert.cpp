#include <TavaroCore/Editing/TimelineEdits.h>

#include <TavaroCore/Editing/TimedLists.h>

#include <cmath>

namespace tavaro {

namespace {

constexpr double smallestInserted = 0.000001; // seconds; less changes nothing
constexpr double atTolerance = 0.000000001;   // an item this little before the place still moves

template<class Item> void shift(Item& item, double by) { startOf(item) += by; }

void shift(CaptionCue& cue, double by) {
    cue.start += by;
    for (auto& word : cue.words) {
        word.start += by;
        word.end += by;
    }
}

}

void rippleInsert(DemoProject& project, double at, double duration) {
    if (!(duration > smallestInserted) || !std::isfinite(at) || !std::isfinite(duration)) return;
    auto const isBehind = [&](double time) { return time >= at - atTolerance; };
    forEachTimedList(project, [&](auto& items) {
        for (auto& item : items) {
            if (isBehind(startOf(item))) shift(item, duration);
        }
    });
    if (!project.voiceover) return;
    for (auto& segment : project.voiceover->segments) {
        if (segment.anchor && isBehind(*segment.anchor)) *segment.anchor += duration;
    }
}

}
