#pragma once

#include <TavaroCore/Values/TimeRange.h>

#include <span>
#include <vector>

namespace tavaro {

struct RecordingMetadata;
struct SilenceSpan;

/// Finds the stretches of a recording in which nothing happens: the microphone is quiet, and nobody clicks, types or
/// moves the pointer. Reads the log alone, no media. Times are seconds of the recording.
struct SilenceDetector {
    float threshold = 0;        // a level below it is quiet
    double minimumDuration = 0; // shortest quiet stretch that counts, before padding
    double padding = 0;         // kept beside speech and activity
    double bucketSeconds = 0;   // length of one level, as `containsSpeech` counts

    static constexpr double pointerTravel = 0.012; // of the frame; less is a hand at rest

    /// Spans to offer for removal (`isRemoved`), ascending. Without levels the whole recording is quiet, and only
    /// activity breaks it.
    ///
    ///     level     ▆▇▅▁▁▁▁▁▁▁▁▁▁▁▁▁▁▁▁▁▁▅▇
    ///     activity             |
    ///     spans        [====]     [======]
    ///
    /// A span ends 1.5 paddings before activity and half a padding before speech; it begins half a padding after
    /// speech and 1.5 after activity. So the pointer is at rest, and the cursor in its place, before a cut.
    std::vector<SilenceSpan> detect(RecordingMetadata const& recording, double duration) const;

    /// The same of quiet stretches, which ascend and do not touch, and the ascending times of activity. So what an edit
    /// shows of a recording can be asked too.
    std::vector<SilenceSpan> spans(std::vector<TimeRange> const& quiet, std::vector<double> const& activity) const;

    /// Runs of quiet levels, where the levels are spread evenly over the duration.
    std::vector<TimeRange> quietRanges(std::span<float const> levels, double duration) const;

    /// Times of clicks, keys and pointer moves, ascending. The pointer has moved once it is farther than `minTravel`
    /// (unit coordinates) from where it last had.
    static std::vector<double> activityTimes(RecordingMetadata const& recording, double minTravel);

    /// Whether at least that many seconds of levels are not quiet.
    bool containsSpeech(std::span<float const> levels, double minimumSpeech) const;
};

}
