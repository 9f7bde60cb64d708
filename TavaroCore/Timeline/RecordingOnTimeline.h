#pragma once

#include <TavaroCore/Recording/RecordingMetadata.h>
#include <TavaroCore/Values/TimeRange.h>

#include <vector>

namespace tavaro {

class SourceIndex;
struct Timeline;

/// The log in output times: clicks, keystrokes, pointer samples and focus spans as the edit shows them, ascending.
/// What no clip shows is dropped; what several clips show appears where `Timeline::timelineTime` places it. The
/// unprocessed path is left out; levels and health stay those of the recording. Near-linear in the length of the log.
RecordingMetadata onTimeline(RecordingMetadata const& recording, Timeline const& timeline);

/// The output ranges that show a stretch of the recording, in recorded order; parts that stay end to end are one.
std::vector<TimeRange> shownRanges(TimeRange const& recorded, SourceIndex const& index);

}
