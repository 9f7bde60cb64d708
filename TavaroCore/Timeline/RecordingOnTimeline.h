#pragma once

#include <TavaroCore/Recording/RecordingMetadata.h>

namespace tavaro {

struct Timeline;

/// The log in output times: clicks, keystrokes, pointer samples and focus spans as the edit shows them, ascending.
/// What no clip shows is dropped; what several clips show appears where `Timeline::timelineTime` places it. The
/// unprocessed path is left out; levels and health stay those of the recording. Near-linear in the length of the log.
RecordingMetadata onTimeline(RecordingMetadata const& recording, Timeline const& timeline);

}
