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

/// All of where it is in the time of the frame on show, whichever that is.
NormalizedRect areaAround(RedactionTrack const& track, double seconds) {
    auto area = track.areaAt(seconds);
    auto const before = track.areaAt(seconds - frameAge);
    if (before != area) area = area.unionWith(before);
    auto const from = std::ranges::upper_bound(track.keyframes, seconds - frameAge, {}, &RedactionKeyframe::t);
    for (auto keyframe = from; keyframe != track.keyframes.end() && keyframe->t < seconds; ++keyframe) {
        area = area.unionWith(keyframe->rect);
    }
    return area;
}

}

RedactionIndex::RedactionIndex(std::vector<RedactionTrack> const& tracks) : tracks_(tracks), index_(rangesOf(tracks)) {}

std::vector<ActiveRedaction> RedactionIndex::active(std::string_view asset, double seconds) const {
    std::vector<ActiveRedaction> active;
    for (auto const item : index_.holding(seconds)) {
        auto const& track = tracks_[item];
        if (track.asset && *track.asset != asset) continue;
        active.push_back({areaAround(track, seconds), track.style, &track});
    }
    return active;
}

}
