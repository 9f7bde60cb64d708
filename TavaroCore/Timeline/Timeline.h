#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/TimeRange.h>

#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// A stretch of a recording on the timeline: output [start, start + duration) shows the source from `sourceStart` on.
struct VideoClip {
    UUID id = UUID::random();
    std::string asset;       // asset name
    double start = 0;        // output time at which the clip begins
    double sourceStart = 0;  // time in the asset at which it begins
    double duration = 0;     // output seconds
    double speed = 1;        // source seconds a second of output
    double transitionIn = 0; // seconds of transition into this clip
    bool isMuted = false;

    double end() const { return start + duration; }
    TimeRange range() const { return {start, duration}; }
    /// Source seconds covered.
    double sourceSpan() const { return duration * speed; }
    /// When the clip shows a source time inside its span.
    double outputTime(double source) const { return start + (source - sourceStart) / speed; }

    static constexpr auto fields = std::tuple{
        field("id", &VideoClip::id),
        field("asset", &VideoClip::asset),
        field("start", &VideoClip::start),
        field("sourceStart", &VideoClip::sourceStart),
        field("duration", &VideoClip::duration),
        field("speed", &VideoClip::speed),
        field("transitionIn", &VideoClip::transitionIn),
        field("isMuted", &VideoClip::isMuted),
    };
    bool operator==(VideoClip const&) const = default;
};
static_assert(listsEveryField<VideoClip>);

/// Which edge of a clip a trim works on.
enum class ClipEdge { leading, trailing };

constexpr std::array<std::string_view, 2> namesOf(ClipEdge) { return {"leading", "trailing"}; }

struct Timeline {
    std::vector<VideoClip> clips; // in output order

    /// Output time at which the last clip ends.
    double duration() const;
    /// The clip shown at output time t. The end of the last clip belongs to that clip (within 0.000001 s), so that the
    /// last moment of an edit shows something. Null when no clip covers t.
    VideoClip const* clip(double at) const;
    /// The time in the clip's asset that is shown at output time t.
    std::optional<double> sourceTime(double at) const;
    /// The output time at which source time s is shown first; none when no clip holds it. The end of the last clip's
    /// span belongs to it, as in `clip`.
    std::optional<double> timelineTime(double forSource) const;
    /// The output time of a source time that is the end of the last clip's span; none for any other.
    std::optional<double> endTime(double forSource) const;
    /// The start or end of a clip that is within 0.001 s of t; t itself where none is.
    double nearestEdge(double t) const;

    /// Splits the clip shown at t in two: the first keeps its id, the second begins at t with an id of its own and
    /// continues its source. False, and nothing changes, within 0.001 s of the clip's edges or where no clip is.
    bool split(double at);
    /// Cuts [start, start + duration) out and closes the gaps. An end of the span within 0.001 s of a clip's edge means
    /// that edge; a span inside one clip may be as short as it likes.
    void remove(double start, double duration);
    /// Sorts the clips by start and lays them end to end from 0.
    void closeGaps();
    /// Keeps [start, start + duration) only; it then begins at 0.
    void trim(double start, double duration);
    /// By start; clips that start together keep their order.
    void sortClips();

    static constexpr auto fields = std::tuple{
        field("clips", &Timeline::clips),
    };
    bool operator==(Timeline const&) const = default;
};
static_assert(listsEveryField<Timeline>);

}
