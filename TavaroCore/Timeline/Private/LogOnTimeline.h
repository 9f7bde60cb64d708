#pragma once

#include <TavaroCore/Recording/RecordingMetadata.h>

namespace tavaro {

class RecordingOnTimeline;

/// The log in output times: clicks, keystrokes, pointer samples and focus spans as the edit shows them, ascending.
/// What no clip shows is dropped; what several clips show is there for each. The unprocessed path is left out; levels
/// and health stay those of the recording. Near-linear in the length of what is shown.
RecordingMetadata logOnTimeline(RecordingMetadata const& recording, RecordingOnTimeline const& shown);

}
