#include <TavaroRender/Composition/Private/RedactionIndex.h>

#include <algorithm>
#include <optional>

#include <TavaroCore/Privacy/Redaction.h>
#include <TavaroRender/Composition/Private/FrameState.h>

namespace tavaro {

namespace {

constexpr double frameAge = 0.07; // seconds that the frame on show may be older: two frames of a slow recording

std::vector<TimeRange> rangesOf(std::vector<RedactionTrack> const& tracks) {
    std::vector<TimeRange> ranges;
    for (auto const& track : tracks) {
        bool const counts = track.isEnabled && !track.keyframes.empty() && track.end >= track.start;
        ranges.push_back(counts ? TimeRange{track.start - frameAge, track.duration() + 2 * frameAge} : TimeRange{});
    }
    return ranges;
}

/// Held before the first keyframe and after the last; the keyframes ascend.
NormalizedRect rectAt(std::vector<RedactionKeyframe> const& keyframes, double time) {
    auto const next = std::ranges::upper_bound(keyframes, time, {}, &RedactionKeyframe::t);
    if (next == keyframes.begin()) return keyframes.front().rect;
    if (next == keyframes.end()) return keyframes.back().rect;
    auto const& from = *(next - 1);
    double const u = (time - from.t) / (next->t - from.t);
    auto const mix = [u](double a, double b) { return a + (b - a) * u; };
    return {mix(from.rect.x, next->rect.x), mix(from.rect.y, next->rect.y), mix(from.rect.width, next->rect.width),
            mix(from.rect.height, next->rect.height)};
}

}

RedactionIndex::RedactionIndex(std::vector<RedactionTrack> const& tracks) : tracks_(tracks), index_(rangesOf(tracks)) {}

std::vector<ActiveRedaction> RedactionIndex::active(std::string_view asset, double seconds) const {
    std::vector<ActiveRedaction> active;
    for (auto const item : index_.holding(seconds)) {
        auto const& track = tracks_[item];
        if (track.asset && *track.asset != asset) continue;
        auto const now = rectAt(track.keyframes, seconds);
        auto const before = rectAt(track.keyframes, seconds - frameAge);
        active.push_back({now == before ? now : now.unionWith(before), track.style, &track});
    }
    return active;
}

}
