#pragma once

#include <optional>
#include <vector>

#include <TavaroCore/Recording/RecordingMetadata.h>
#include <TavaroCore/Timeline/RecordingOnTimeline.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Values/TimeRange.h>

namespace tavaro {

struct DemoProject;
struct VideoClip;

/// The recorded pointer on the output's clock: where it is, whether it has been resting so long that it hides, and
/// which click is being shown. Points are unit coordinates of the cropped source. Answers cost a binary search.
class PointerTrack {
public:
    /// `project` must stay where it is while the track lives.
    explicit PointerTrack(DemoProject const& project);

    /// The recording's time that is shown then; none while it is not shown.
    std::optional<double> recordedTime(double at) const { return recording_.recordedTime(at); }

    /// None while the recording is not shown, or when nothing was recorded.
    std::optional<UnitPoint2> position(double at) const;

    /// How far the pointer moved during the `seconds` before; nothing right after a cut.
    UnitPoint2 travel(double at, double seconds) const;

    /// 1 while the pointer is in use, 0 once it has rested for `idleHideAfter`; it comes back just before it moves.
    double idleOpacity(double at) const;

    struct Click {
        double start = 0; // output seconds
        UnitPoint2 position;
    };
    /// The latest click whose effect, of `duration` seconds, is under way.
    std::optional<Click> click(double at, double duration) const;

    /// The pointer's samples that the output shows during `range`, at output times.
    std::vector<CursorSample> samples(TimeRange const& range) const;

    /// A point of the whole frame in the coordinates of the cropped one.
    UnitPoint2 cropped(UnitPoint2 const& point) const;

private:
    std::optional<UnitPoint2> recordedPosition(double at) const;
    double continuousSince(VideoClip const& clip) const;

    DemoProject const& project_;
    RecordingOnTimeline recording_;
    NormalizedRect crop_;
    std::vector<double> continuousSince_; // by clip: source time from which the picture has run on without a cut
    std::vector<double> moves_;           // source times at which the pointer moved or clicked, ascending
    std::vector<Click> clicks_;           // ascending
};

}
