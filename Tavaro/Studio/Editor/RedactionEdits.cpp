#include <Tavaro/Studio/Editor/RedactionEdits.h>

#include <Tavaro/Model/Privacy/KeptScan.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

constexpr double shortest = 0.05;   // seconds of the recording
constexpr double touching = 0.0001; // seconds; times that close are the same

using Clips = std::vector<VideoClip const*>; // in the film's order

std::string assetOf(DemoProject const& project, RedactionTrack const& track) {
    return track.asset ? *track.asset : std::string(recordingAsset(project));
}

Clips clipsOf(DemoProject const& project, std::string const& asset) {
    Clips clips;
    for (auto const& clip : project.timeline.clips)
        if (clip.asset == asset && clip.duration > 0) clips.push_back(&clip);
    return clips;
}

bool goesOn(VideoClip const& clip, VideoClip const& next) {
    return std::abs(next.start - clip.end()) <= touching &&
           next.sourceStart >= clip.sourceStart + clip.sourceSpan() - touching;
}

/// Those around a span of the film that show the recording forwards, one behind the other.
Clips inOneGo(Clips const& clips, TimeRange const& span) {
    Clips run;
    for (auto const* clip : clips) {
        if (!run.empty() && !goesOn(*run.back(), *clip)) {
            if (run.back()->end() >= span.end() - touching) break;
            run.clear();
        }
        run.push_back(clip);
    }
    return run;
}

/// The recorded moment that they show then, or the nearest. Where two meet, an end belongs to the first.
double recordedAt(Clips const& clips, double time, ClipEdge edge) {
    VideoClip const* best = nullptr;
    double least = std::numeric_limits<double>::infinity();
    for (auto const* clip : clips) {
        double away = std::max({clip->start - time, time - clip->end(), 0.0});
        if (away <= touching) away = 0;
        if (away > least || (away == least && edge == ClipEdge::trailing)) continue;
        best = clip;
        least = away;
    }
    return best->sourceStart + (std::clamp(time, best->start, best->end()) - best->start) * best->speed;
}

RedactionTrack* trackOf(DemoProject& project, UUID const& id) {
    if (std::ranges::find(*project.redactions, id, &RedactionTrack::id) == project.redactions->end()) return nullptr;
    return &*std::ranges::find(project.redactions.edit(), id, &RedactionTrack::id);
}

/// What is left of it within two moments of the recording; it may reach further than it did.
void limit(RedactionTrack& track, double from, double to) {
    std::vector<RedactionKeyframe> kept;
    auto const& all = track.keyframes;
    for (auto const& each : all)
        if (each.t >= from && each.t <= to) kept.push_back(each);
    if (!all.empty()) {
        if (all.front().t < from && (kept.empty() || kept.front().t > from))
            kept.insert(kept.begin(), {from, track.areaAt(from)});
        if (all.back().t > to && (kept.empty() || kept.back().t < to)) kept.push_back({to, track.areaAt(to)});
    }
    track.keyframes = std::move(kept);
    track.start = from;
    track.end = to;
}

bool isShown(DemoProject const& project, RedactionTrack const& track) {
    auto const asset = assetOf(project, track);
    return !RecordingOnTimeline(project.timeline, asset).stretches({track.start, track.duration()}).empty();
}

/// Keeps hidden what was so before, or behind, what is trimmed, where the film shows that.
void keepRest(DemoProject& project, RedactionTrack rest, double from, double to) {
    if (to - from <= touching) return;
    limit(rest, from, to);
    rest.id = UUID::random();
    if (isShown(project, rest)) project.redactions.edit().push_back(std::move(rest));
}

/// What the place of the film that is held shows of a track, in recorded seconds.
struct Held {
    double first = 0;
    double last = 0;
};

/// None where nothing changes: the film does not show what is before the place that is held.
std::optional<double> newStart(RedactionTrack const& track, Held const& held, double wanted) {
    double const start = std::min(wanted, std::max(held.last - shortest, held.first));
    double const least = std::max(track.start, held.first);
    bool const isSame = std::abs(start - least) <= touching || (start < least && track.start < held.first - touching);
    return isSame ? std::nullopt : std::optional(start);
}

std::optional<double> newEnd(RedactionTrack const& track, Held const& held, double wanted) {
    double const end = std::max(wanted, std::min(held.first + shortest, held.last));
    double const most = std::min(track.end, held.last);
    bool const isSame = std::abs(end - most) <= touching || (end > most && track.end > held.last + touching);
    return isSame ? std::nullopt : std::optional(end);
}

/// A side that was moved, and the one across from it.
std::pair<double, double> span(double low, double high, double byLow, double byHigh, double least) {
    double const length = high - low;
    if (byLow == byHigh) {
        double const start = std::clamp(low + byLow, 0.0, std::max(1 - length, 0.0));
        return {start, length};
    }
    double const start = std::clamp(low + byLow, 0.0, 1 - least);
    double const end = std::clamp(high + byHigh, start + least, 1.0);
    return {start, end - start};
}

}

std::optional<TimeRange> shownSpan(DemoProject const& project, RedactionTrack const& track, double at) {
    auto const asset = assetOf(project, track);
    std::optional<TimeRange> nearest;
    double least = std::numeric_limits<double>::infinity();
    auto const stretches = RecordingOnTimeline(project.timeline, asset).stretches({track.start, track.duration()});
    for (auto const& stretch : stretches) {
        double const away = std::max({stretch.range.start - at, at - stretch.range.end(), 0.0});
        if (away >= least) continue;
        nearest = stretch.range;
        least = away;
    }
    return nearest;
}

void moveRedaction(DemoProject& project, UUID const& redaction, double by, double at) {
    auto* track = trackOf(project, redaction);
    auto const shown = track ? shownSpan(project, *track, at) : std::nullopt;
    if (!shown) return;
    auto const asset = assetOf(project, *track);
    auto const clips = clipsOf(project, asset);
    double shift =
        recordedAt(clips, shown->start + by, ClipEdge::leading) - recordedAt(clips, shown->start, ClipEdge::leading);
    if (auto const known = project.assetDurations.find(asset); known != project.assetDurations.end())
        shift = std::min(shift, std::max(known->second - track->end, 0.0));
    shift = std::max(shift, -track->start);
    if (shift == 0) return;
    track->start += shift;
    track->end += shift;
    for (auto& each : track->keyframes) each.t += shift;
    track->isAutomatic = false;
}

void trimRedaction(DemoProject& project, UUID const& redaction, ClipEdge edge, double to, double at) {
    auto* track = trackOf(project, redaction);
    auto const shown = track ? shownSpan(project, *track, at) : std::nullopt;
    if (!shown) return;
    auto const run = inOneGo(clipsOf(project, assetOf(project, *track)), *shown);
    if (run.empty()) return;
    auto const before = *track;
    Held const held{recordedAt(run, shown->start, ClipEdge::leading),
                    recordedAt(run, shown->end(), ClipEdge::trailing)};
    double const wanted = recordedAt(run, to, edge);
    auto const moment = edge == ClipEdge::leading ? newStart(before, held, wanted) : newEnd(before, held, wanted);
    if (!moment) return;
    track->isAutomatic = false;
    // By where a finding was beyond its new edge the next scan knows that somebody uncovered it there.
    bool const remembers = isFinding(before);
    if (edge == ClipEdge::leading) {
        limit(*track, remembers ? std::min(*moment, held.first) : *moment, before.end);
        track->start = *moment;
        keepRest(project, before, before.start, held.first);
    } else {
        limit(*track, before.start, remembers ? std::max(*moment, held.last) : *moment);
        track->end = *moment;
        keepRest(project, before, held.last, before.end);
    }
}

void changeArea(RedactionTrack& track, AreaChange const& change, double leastSide) {
    for (auto& each : track.keyframes) {
        auto& rect = each.rect;
        auto const [x, width] = span(rect.x, rect.maxX(), change.left, change.right, leastSide);
        auto const [y, height] = span(rect.y, rect.maxY(), change.top, change.bottom, leastSide);
        rect = {x, y, width, height};
    }
    track.isAutomatic = false;
}

}
