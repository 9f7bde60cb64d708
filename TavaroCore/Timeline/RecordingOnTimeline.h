#pragma once

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroCore/Timeline/Timeline.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace tavaro {

/// Where the edit shows the recording: from recorded seconds to output seconds and back. A stretch of the recording
/// that several clips show appears in each of them; clips of another asset show nothing of it. Answers take logarithmic
/// time for each place that they name.
class RecordingOnTimeline {
public:
    /// A stretch of the recording as the output shows it in one go: what clips show of it one after the other, cuts
    /// inside it included.
    struct Stretch {
        TimeRange range;            // output seconds
        double recordedSeconds = 0; // shown, at the recording's own pace
    };

    /// `asset` is the recording's. Borrows the timeline.
    RecordingOnTimeline(Timeline const& timeline, std::string_view asset);

    bool isShownBy(VideoClip const& clip) const { return clip.asset == asset_; }
    /// `Timeline::clip`, where that clip shows the recording; else null.
    VideoClip const* clip(double at) const;
    /// The recorded time that is shown at an output time.
    std::optional<double> recordedTime(double at) const;

    /// Every output time at which a recorded time is shown, ascending. The end of the edit's last clip belongs to it,
    /// as in `Timeline::clip`.
    std::vector<double> outputTimes(double recorded) const;

    /// Each clip that shows some of a recorded range, with the part that it shows.
    void forEachClip(TimeRange const& recorded, FunctionRef<void(VideoClip const&, TimeRange const& part)> visit) const;
    /// What the output shows of a recorded range, ascending in output time.
    std::vector<Stretch> stretches(TimeRange const& recorded) const;

    /// Calls `visit(entry, outputTime)` for every place at which an entry of a log is shown: the places that
    /// `outputTimes` names, clip by clip where the entries ascend in their `t`, as those of a log do.
    template<class Entry, class Visit> void forEachShown(std::vector<Entry> const& entries, Visit&& visit) const {
        if (!std::ranges::is_sorted(entries, {}, &Entry::t)) {
            for (auto const& entry : entries) {
                for (double const time : outputTimes(entry.t)) visit(entry, time);
            }
            return;
        }
        for (auto const index : clips_) {
            auto const& clip = timeline_.clips[index];
            auto entry = std::lower_bound(entries.begin(), entries.end(), clip.sourceStart,
                                          [](Entry const& a, double t) { return a.t < t; });
            for (; entry != entries.end(); ++entry) {
                auto const time = timeIn(clip, entry->t);
                if (!time) break;
                visit(*entry, *time);
            }
        }
    }

private:
    /// A clip's span of the recording. The spans are a search tree: each is the root of a range of them, and knows the
    /// latest end in that range.
    struct Span {
        double start = 0;
        double end = 0;
        double latestEnd = 0;
        std::size_t clip = 0;
    };

    std::optional<double> timeIn(VideoClip const& clip, double recorded) const;
    bool isLast(VideoClip const& clip) const { return &clip == &timeline_.clips.back(); }

    Timeline const& timeline_;
    std::string_view asset_;
    bool isInOrder_ = false;         // clips begin and end in the order in which they are listed
    std::vector<std::size_t> clips_; // that show the recording, in the edit's order
    std::vector<Span> spans_;        // ascending in start
};

}
