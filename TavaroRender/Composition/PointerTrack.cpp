#include <TavaroRender/Composition/Private/PointerTrack.h>

#include <algorithm>
#include <cmath>

#include <TavaroCore/Cursor/CursorSmoother.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroCore/Values/Easing.h>
#include <TavaroCore/Values/Smoothstep.h>

namespace tavaro {

namespace {

constexpr double joinTolerance = 0.001;  // seconds; clips that meet within it show no cut
constexpr double restTolerance = 0.0015; // of the frame; a resting hand trembles less
constexpr double idleFadeOut = 0.35;     // seconds
constexpr double idleFadeIn = 0.20;      // seconds, before the pointer moves again
constexpr double longestReturn = 0.9;    // seconds of the way back of a pointer that loops
constexpr double returnShare = 0.25;     // of a short output

/// Times at which the pointer left the place where it rested, and clicks.
std::vector<double> activity(RecordingMetadata const& metadata) {
    std::vector<double> times;
    std::optional<UnitPoint2> rest;
    for (auto const& sample : metadata.cursorSamples) {
        if (rest && rest->distance(sample.position) <= restTolerance) continue;
        rest = sample.position;
        times.push_back(sample.t);
    }
    for (auto const& click : metadata.clicks) times.push_back(click.t);
    std::ranges::sort(times);
    return times;
}

}

PointerTrack::PointerTrack(DemoProject const& project)
    : project_(project)
    , recording_(recordingOnTimeline(project))
    , crop_(project.effectiveCrop()) {
    auto const& metadata = *project.metadata;
    auto const& clips = project.timeline.clips;
    for (std::size_t i = 0; i < clips.size(); ++i) {
        bool const joins =
            i > 0 && clips[i - 1].asset == clips[i].asset &&
            std::abs(clips[i - 1].end() - clips[i].start) < joinTolerance &&
            std::abs(clips[i - 1].sourceStart + clips[i - 1].sourceSpan() - clips[i].sourceStart) < joinTolerance;
        continuousSince_.push_back(joins ? continuousSince_.back() : clips[i].sourceStart);
    }
    recording_.forEachShown(metadata.clicks, [&](ClickEvent const& click, double at) {
        clicks_.push_back({at, cropped(click.position)});
    });
    std::ranges::sort(clicks_, {}, &Click::start);
    if (project.cursor.idleHideAfter > 0) moves_ = activity(metadata);
}

UnitPoint2 PointerTrack::cropped(UnitPoint2 const& point) const {
    return {(point.x - crop_.x) / crop_.width, (point.y - crop_.y) / crop_.height};
}

std::optional<UnitPoint2> PointerTrack::recordedPosition(double at) const {
    auto const source = recording_.recordedTime(at);
    if (!source) return std::nullopt;
    auto const point = CursorSmoother::position(project_.metadata->cursorSamples, *source);
    if (!point) return std::nullopt;
    return cropped(*point);
}

std::optional<UnitPoint2> PointerTrack::position(double at) const {
    auto const here = recordedPosition(at);
    if (!here || !project_.cursor.loops) return here;
    double const duration = project_.duration();
    double const wayBack = std::min(longestReturn, duration * returnShare);
    double const progress = wayBack > 0 ? (at - (duration - wayBack)) / wayBack : 0;
    if (progress <= 0) return here;
    auto const first = recordedPosition(0);
    return first ? UnitPoint2::lerp(*here, *first, smoothstep(0, 1, progress)) : here;
}

double PointerTrack::continuousSince(VideoClip const& clip) const {
    return continuousSince_[static_cast<std::size_t>(&clip - project_.timeline.clips.data())];
}

UnitPoint2 PointerTrack::travel(double at, double seconds) const {
    auto const* clip = recording_.clip(at);
    if (!clip || seconds <= 0) return {};
    double const source = *recording_.recordedTime(at);
    if (source - seconds * clip->speed < continuousSince(*clip)) return {};
    auto const now = position(at);
    auto const before = position(at - seconds);
    return now && before ? UnitPoint2{now->x - before->x, now->y - before->y} : UnitPoint2{};
}

double PointerTrack::idleOpacity(double at) const {
    double const hideAfter = project_.cursor.idleHideAfter;
    auto const* clip = recording_.clip(at);
    if (!(hideAfter > 0) || !clip || clip->speed <= 0) return 1;
    double const source = *recording_.recordedTime(at);
    auto const next = std::ranges::upper_bound(moves_, source);
    // A pointer that comes into the picture with a cut is news, however long it has rested in the recording.
    double last = continuousSince(*clip);
    if (next != moves_.begin()) last = std::max(last, *(next - 1));
    double const gone = smoothstep(hideAfter, hideAfter + idleFadeOut, (source - last) / clip->speed);
    if (next == moves_.end()) return 1 - gone;
    double const back = 1 - smoothstep(0, idleFadeIn, (*next - source) / clip->speed);
    return std::max(1 - gone, back);
}

std::optional<PointerTrack::Click> PointerTrack::click(double at, double duration) const {
    auto const after = std::ranges::upper_bound(clicks_, at, {}, &Click::start);
    if (after == clicks_.begin()) return std::nullopt;
    auto const& latest = *(after - 1);
    return at - latest.start < duration ? std::optional{latest} : std::nullopt;
}

std::vector<CursorSample> PointerTrack::samples(TimeRange const& range) const {
    auto const& recorded = project_.metadata->cursorSamples;
    std::vector<CursorSample> shown;
    for (auto const& clip : project_.timeline.clips) {
        double const from = std::max(clip.start, range.start);
        double const to = std::min(clip.end(), range.end());
        if (to <= from || clip.speed <= 0 || !recording_.isShownBy(clip)) continue;
        auto const source = [&](double output) { return clip.sourceStart + (output - clip.start) * clip.speed; };
        // The log is silent while the pointer rests, so a path begins where the pointer is, not at its next move.
        if (auto const first = recordedPosition(from)) shown.push_back({from, *first});
        auto sample = std::ranges::upper_bound(recorded, source(from), {}, &CursorSample::t);
        for (; sample != recorded.end() && sample->t < source(to); ++sample) {
            shown.push_back({clip.outputTime(sample->t), cropped(sample->position), sample->kind});
        }
    }
    return shown;
}

}
