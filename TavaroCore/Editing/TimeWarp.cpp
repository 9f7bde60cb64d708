#include <TavaroCore/Editing/TimelineEdits.h>

#include <TavaroCore/Editing/TimedLists.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double unchangedRatio = 0.000000001; // a ratio this close to 1 changes nothing
constexpr double shortestWarped = 0.05;        // seconds
constexpr double insideTolerance = 0.001;      // how far an audio clip may stick out of the range it is retimed with

/// The rule of a stretched range for each kind of item.
struct Warp {
    TimeRange range;
    double ratio;
    double audioRateMultiplier;

    double warped(double t) const {
        if (t <= range.start) return t;
        if (t >= range.end()) return t + range.duration * (ratio - 1);
        return range.start + ratio * (t - range.start);
    }

    /// An item apart from the range only moves.
    bool reaches(TimeRange const& span) const { return span.end() > range.start && span.start < range.end(); }

    TimeRange warped(TimeRange const& span) const {
        double const start = warped(span.start);
        return {start, reaches(span) ? std::max(warped(span.end()) - start, shortestWarped) : span.duration};
    }

    template<class Item> void operator()(std::vector<Item>& items) const {
        for (auto& item : items) apply(item);
    }

private:
    template<class Item> void apply(Item& item) const {
        auto const span = warped(item.range());
        item.start = span.start;
        item.duration = span.duration;
    }

    void apply(LayoutCue& cue) const { cue.time = warped(cue.time); }

    void apply(ZoomEvent& zoom) const {
        bool const isStretched = reaches(zoom.range());
        apply<ZoomEvent>(zoom);
        if (!isStretched) return;
        zoom.rampIn = std::min(zoom.rampIn, zoom.duration / 2);
        zoom.rampOut = std::min(zoom.rampOut, zoom.duration / 2);
    }

    void apply(CaptionCue& cue) const {
        apply<CaptionCue>(cue);
        for (auto& word : cue.words) {
            auto const span = warped(TimeRange{word.start, word.end - word.start});
            word.start = span.start;
            word.end = span.end();
        }
    }

    void apply(AudioClip& clip) const {
        bool const isInside =
            clip.start >= range.start - insideTolerance && clip.range().end() <= range.end() + insideTolerance;
        apply<AudioClip>(clip);
        if (!isInside) return;
        clip.speed *= audioRateMultiplier;
        clip.fadeIn *= ratio;
        clip.fadeOut *= ratio;
    }

    void apply(VoiceoverSegment& segment) const {
        auto const before = spanOf(segment);
        auto const after = warped(before);
        segment.start = after.start;
        if (segment.anchor) segment.anchor = warped(*segment.anchor);
        if (segment.audioDuration && reaches(before)) segment.audioDuration = after.duration;
    }
};

}

void timeWarp(DemoProject& project, TimeRange const& range, double ratio, double audioRateMultiplier) {
    if (!(ratio > 0) || std::abs(ratio - 1) <= unchangedRatio || !(range.duration > 0)) return;
    for (double const number : {range.start, range.duration, ratio, audioRateMultiplier}) {
        if (!std::isfinite(number)) return;
    }
    forEachTimedList(project, Warp{range, ratio, audioRateMultiplier});
}

}
