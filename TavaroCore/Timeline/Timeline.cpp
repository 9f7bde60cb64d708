#include <TavaroCore/Timeline/Timeline.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tavaro {

namespace {

constexpr double endTolerance = 0.000001;
constexpr double membershipTolerance = 0.000001; // how far a clip may stick out of the span it is removed with
constexpr double edgeTolerance = 0.001;          // nothing is split, and no piece left, that close to an edge

/// The id of a part that is split off. Where the whole has one of a feature's own making (version 8), the part's begins
/// alike, so that the feature knows it again.
UUID partOf(UUID const& whole) {
    constexpr int ownMaking = 8;
    constexpr std::size_t handedOn = 12; // bytes
    auto part = UUID::random();
    if (whole.bytes[6] >> 4 == ownMaking) std::copy_n(whole.bytes.begin(), handedOn, part.bytes.begin());
    return part;
}

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

double Timeline::nearestEdge(double t) const {
    double nearest = t, distance = edgeTolerance;
    for (auto const& clip : clips) {
        for (double const edge : {clip.start, clip.end()}) {
            if (std::abs(edge - t) > distance) continue;
            nearest = edge;
            distance = std::abs(edge - t);
        }
    }
    return nearest;
}

bool Timeline::split(double at) {
    auto const found = std::find_if(clips.begin(), clips.end(), [&](VideoClip const& clip) {
        return clip.duration >= 0 && clip.range().contains(at);
    });
    if (found == clips.end()) return false;
    double const offset = at - found->start;
    if (!(offset > edgeTolerance && offset < found->duration - edgeTolerance)) return false;
    auto second = *found;
    second.id = partOf(found->id);
    second.start = at;
    second.sourceStart += offset * second.speed;
    second.duration -= offset;
    found->duration = offset;
    clips.insert(found + 1, std::move(second));
    return true;
}

void Timeline::remove(double start, double duration) {
    if (!(duration > 0)) return;
    double const first = nearestEdge(start), last = nearestEdge(start + duration);
    split(first);
    if (!split(last) && last - first <= edgeTolerance) {
        // Too short for a piece of its own: the clip that begins there loses its head instead.
        for (auto& clip : clips) {
            if (std::abs(clip.start - first) > membershipTolerance || clip.end() <= last) continue;
            clip.sourceStart += (last - first) * clip.speed;
            clip.duration -= last - first;
            clip.start = last;
            break;
        }
    }
    std::erase_if(clips, [&](VideoClip const& clip) {
        return clip.start >= first - membershipTolerance &&
               clip.start + std::max(clip.duration, 0.0) <= last + membershipTolerance;
    });
    closeGaps();
}

void Timeline::closeGaps() {
    sortClips();
    double start = 0;
    for (auto& clip : clips) {
        clip.start = start;
        start += clip.duration;
    }
}

void Timeline::trim(double start, double duration) {
    if (start > 0) remove(0, start);
    double const left = this->duration();
    if (duration < left) remove(duration, left - duration);
}

void Timeline::sortClips() {
    auto const isEarlier = [](VideoClip const& a, VideoClip const& b) { return a.start < b.start; };
    if (std::is_sorted(clips.begin(), clips.end(), isEarlier)) return; // nearly always, and sorting takes memory
    std::stable_sort(clips.begin(), clips.end(), isEarlier);
}

}
