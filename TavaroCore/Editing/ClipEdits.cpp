#include <TavaroCore/Editing/ClipEdits.h>

#include <TavaroCore/Editing/AudioSplits.h>
#include <TavaroCore/Editing/Private/EditError.h>
#include <TavaroCore/Editing/Private/PictureRange.h>
#include <TavaroCore/Editing/Private/Retime.h>
#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace tavaro {

namespace {

constexpr double edgeTolerance = 0.001; // sound this near to an edge of the picture begins or ends there
constexpr double smallestMove = 0.001;  // seconds; less is no trim
constexpr double sameSpeed = 0.000001;
constexpr double unlimited = std::numeric_limits<double>::infinity();

/// The clip of that id, as constant as the timeline is.
template<class SomeTimeline> auto& clipOf(SomeTimeline& timeline, UUID const& id) {
    auto const found = std::ranges::find(timeline.clips, id, &VideoClip::id);
    if (found != timeline.clips.end()) return *found;
    throw EditError(EditError::Kind::noSuchClip, "The project has no clip " + id.text() + ".");
}

void requireFinite(double number) {
    if (std::isfinite(number)) return;
    throw EditError(EditError::Kind::badNumber, "The edit cannot be made: its times and speeds have to be numbers.");
}

/// Seconds of an asset, or `unknown` where the document does not say.
double mediaEnd(DemoProject const& project, std::string const& asset, double unknown) {
    auto const found = project.assetDurations.find(asset);
    return found == project.assetDurations.end() ? unknown : found->second;
}

/// Output seconds before and behind a stretch of media.
Headroom mediaAround(double sourceStart, double sourceEnd, double speed, double mediaEnd) {
    if (speed == 0) return {unlimited, unlimited};
    if (!(speed > 0)) return {};
    return {std::max(sourceStart, 0.0) / speed, std::max(mediaEnd - sourceEnd, 0.0) / speed};
}

Headroom headroom(DemoProject const& project, VideoClip const& clip) {
    double const end = clip.sourceStart + clip.sourceSpan();
    return mediaAround(clip.sourceStart, end, clip.speed, mediaEnd(project, clip.asset, end));
}

Headroom headroom(DemoProject const& project, AudioClip const& clip) {
    double const end = clip.sourceStart + clip.sourceSpan();
    return mediaAround(clip.sourceStart, end, clip.speed, mediaEnd(project, clip.asset, end));
}

/// Adds media at an edge of a piece, without moving its start.
template<class Clip> void lengthen(Clip& clip, ClipEdge edge, double by) {
    if (edge == ClipEdge::leading) clip.sourceStart -= by * clip.speed;
    clip.duration += by;
}

/// Recorded sound that reaches the edge and plays as fast follows the picture into the time inserted at `place`.
void growRecordedSound(DemoProject& project, ClipEdge edge, double place, double inserted, double speed) {
    bool const isLeading = edge == ClipEdge::leading;
    for (auto& track : project.audioTracks) {
        if (!isRecorded(track.role)) continue;
        for (auto& clip : track.clips) {
            double const reached = isLeading ? clip.start : clip.range().end();
            if (std::abs(reached - (isLeading ? place + inserted : place)) > edgeTolerance) continue;
            if (std::abs(clip.speed - speed) > sameSpeed) continue;
            auto const room = headroom(project, clip);
            double const by = std::min(inserted, isLeading ? room.leading : room.trailing);
            if (isLeading) clip.start -= by;
            lengthen(clip, edge, by);
        }
    }
}

/// The recorded sound of a span once more, right behind it; its pieces end at the span's ends.
void repeatRecordedSound(DemoProject& project, TimeRange const& span) {
    for (auto& track : project.audioTracks) {
        if (!isRecorded(track.role)) continue;
        auto const pieces = track.clips;
        for (auto piece : pieces) {
            if (piece.start < span.start - edgeTolerance || piece.range().end() > span.end() + edgeTolerance) continue;
            piece.id = UUID::random();
            piece.start += span.duration;
            track.clips.push_back(piece);
        }
        std::ranges::stable_sort(track.clips, {}, &AudioClip::start);
    }
}

/// Seconds without sound of the track before a clip, back to the start of the edit.
double freeBefore(AudioTrack const& track, AudioClip const& clip) {
    double last = 0;
    for (auto const& other : track.clips) {
        if (other.id != clip.id && other.start <= clip.start) last = std::max(last, other.range().end());
    }
    return clip.start - last;
}

/// Seconds without sound of the track behind a clip, up to the end of the edit.
double freeBehind(AudioTrack const& track, AudioClip const& clip, double editEnd) {
    double next = editEnd;
    for (auto const& other : track.clips) {
        if (other.id != clip.id && other.start >= clip.start) next = std::min(next, other.start);
    }
    return next - clip.range().end();
}

void extend(DemoProject& project, UUID const& id, ClipEdge edge, double by) {
    auto& clip = clipOf(project.timeline, id);
    double const place = edge == ClipEdge::leading ? clip.start : clip.end();
    double const speed = clip.speed;
    lengthen(clip, edge, by);
    project.timeline.closeGaps();
    splitAudio(project, place, AudioReach::recorded);
    rippleInsert(project, place, by);
    if (speed > 0) growRecordedSound(project, edge, place, by, speed);
}

void shorten(DemoProject& project, UUID const& id, ClipEdge edge, double by) {
    auto const clip = clipOf(project.timeline, id);
    double const start = edge == ClipEdge::leading ? clip.start : clip.end() - by;
    removeTimeRange(project, start, by);
    if (edge == ClipEdge::trailing) return;
    // The part that is left was split off and named anew.
    for (auto& left : project.timeline.clips) {
        if (std::abs(left.start - clip.start) <= edgeTolerance && left.asset == clip.asset) {
            left.id = id;
            return;
        }
    }
}

}

Headroom headroom(DemoProject const& project, UUID const& clip) {
    return headroom(project, clipOf(project.timeline, clip));
}

TrimBounds trimBounds(DemoProject const& project, UUID const& id, ClipEdge edge) {
    auto const& clip = clipOf(project.timeline, id);
    auto const room = headroom(project, clip);
    double const spare = std::max(clip.duration - shortestClip, 0.0);
    if (edge == ClipEdge::leading) return {clip.start - room.leading, clip.start + spare};
    return {clip.end() - spare, clip.end() + room.trailing};
}

double trimClip(DemoProject& project, UUID const& id, ClipEdge edge, double to) {
    requireFinite(to);
    auto const bounds = trimBounds(project, id, edge);
    auto const& clip = clipOf(project.timeline, id);
    double const within = std::clamp(to, bounds.earliest, bounds.latest);
    double const outward = edge == ClipEdge::leading ? clip.start - within : within - clip.end();
    if (!(std::abs(outward) > smallestMove)) return 0;
    pictureRange(project, {}); // the clip may move; how far its edge goes stays
    double const before = project.duration();
    if (outward > 0) {
        extend(project, id, edge, outward);
    } else {
        shorten(project, id, edge, -outward);
    }
    return project.duration() - before;
}

void setSpeed(DemoProject& project, UUID const& id, double speed) {
    requireFinite(speed);
    double const current = clipOf(project.timeline, id).speed;
    if (!(current > 0)) {
        throw EditError(EditError::Kind::heldFrame,
                        "A held frame has no speed; trim its clip to change how long it is shown.");
    }
    pictureRange(project, {});
    double const wanted = std::clamp(speed, slowestRate, fastestRate);
    retime(project, clipOf(project.timeline, id).range(), wanted / current);
    clipOf(project.timeline, id).speed = wanted; // without the rounding of the rate
}

void setMuted(DemoProject& project, UUID const& clip, bool isMuted) {
    clipOf(project.timeline, clip).isMuted = isMuted;
}

bool splitClip(DemoProject& project, double at) { return project.timeline.split(at); }

void duplicateClip(DemoProject& project, UUID const& id) {
    clipOf(project.timeline, id);
    pictureRange(project, {});
    auto& clips = project.timeline.clips;
    auto const at = std::ranges::find(clips, id, &VideoClip::id);
    auto copy = *at;
    auto const span = copy.range();
    copy.id = UUID::random();
    clips.insert(std::next(at), copy);
    project.timeline.closeGaps();
    splitAudio(project, span.start, AudioReach::recorded);
    splitAudio(project, span.end(), AudioReach::recorded);
    rippleInsert(project, span.end(), span.duration);
    repeatRecordedSound(project, span);
}

double growAudio(DemoProject& project, UUID const& audioClip, ClipEdge edge, double by) {
    requireFinite(by);
    bool const isLeading = edge == ClipEdge::leading;
    for (auto& track : project.audioTracks) {
        auto const found = std::ranges::find(track.clips, audioClip, &AudioClip::id);
        if (found == track.clips.end()) continue;
        auto const media = headroom(project, *found);
        double const room =
            std::min(isLeading ? media.leading : media.trailing,
                     isLeading ? freeBefore(track, *found) : freeBehind(track, *found, project.duration()));
        double const spare = std::max(found->duration - shortestClip, 0.0);
        double const moved = std::clamp(by, -spare, std::max(room, 0.0));
        if (isLeading) found->start -= moved;
        lengthen(*found, edge, moved);
        found->fadeIn = std::min(found->fadeIn, found->duration);
        found->fadeOut = std::min(found->fadeOut, found->duration);
        return moved;
    }
    throw EditError(EditError::Kind::noSuchClip, "The project has no audio clip " + audioClip.text() + ".");
}

}
