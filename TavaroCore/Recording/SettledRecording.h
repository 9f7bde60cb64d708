#pragma once

#include <TavaroCore/Recording/RecordingMetadata.h>

namespace tavaro {

/// Brings a log from elsewhere into the order that readers rely on: every list of events ascending in time, and a log
/// that knows no frame size belongs to a recording of `frame`.
void settle(RecordingMetadata& log, Size2 frame);

/// Drops what happened after the end of a take of this length, ends there what lasts longer, and gives the level of the
/// microphone, which is spread evenly over the take, just its length.
void trimToDuration(RecordingMetadata& log, double duration);

/// Makes it the log of the take from `start` on: drops what happened before, and counts times from there.
void cutStart(RecordingMetadata& log, double start);

}
