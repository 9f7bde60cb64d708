#include <TavaroCore/Timeline/Timeline.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double endTolerance = 0.000001;

}

double Timeline::duration() const {
    double last = 0;
    for (auto const& clip : clips) last = std::max(last, clip.end());
    return last;
}

VideoClip const* Timeline::clip(double at) const {
    for (auto const& clip : clips) {
        if (clip.range().contains(at)) return &clip;
    }
    if (clips.empty() || clips.back().duration <= 0) return nullptr;
    auto const& last = clips.back();
    return std::abs(at - last.end()) <= endTolerance ? &last : nullptr;
}

std::optional<double> Timeline::sourceTime(double at) const {
    auto const* shown = clip(at);
    if (!shown) return std::nullopt;
    return shown->sourceStart + (std::min(at, shown->end()) - shown->start) * shown->speed;
}

std::optional<double> Timeline::timelineTime(double forSource) const {
    for (auto const& clip : clips) {
        if (TimeRange{clip.sourceStart, clip.sourceSpan()}.contains(forSource)) return clip.outputTime(forSource);
    }
    return endTime(forSource);
}

std::optional<double> Timeline::endTime(double forSource) const {
    if (clips.empty() || clips.back().sourceSpan() <= 0) return std::nullopt;
    auto const& last = clips.back();
    if (std::abs(forSource - (last.sourceStart + last.sourceSpan())) > endTolerance) return std::nullopt;
    return std::min(last.outputTime(forSource), last.end());
}

}
