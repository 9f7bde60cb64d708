#pragma once

#include <TavaroCore/Recording/RecordingMetadata.h>
#include <TavaroCore/Timeline/RecordingOnTimeline.h>

#include <string_view>

namespace tavaro {

struct DemoProject;

/// The asset that the document's log, levels and transcript belong to: of the movies on the timeline that are long
/// enough for what was logged, the one whose length is nearest to the log's. Among those of which nothing is known, and
/// without a log, the one that the edit shows most of. Lives as long as the project's clips; empty without clips.
std::string_view recordingAsset(DemoProject const& project);

/// Length of the recording: that of its movie. Where that is not known, the time of the last thing logged or shown.
double recordedSeconds(DemoProject const& project);

/// Where the project's edit shows its recording. Borrows the project's clips.
RecordingOnTimeline recordingOnTimeline(DemoProject const& project);

/// The project's log as its edit shows it.
RecordingMetadata logOnTimeline(DemoProject const& project);

}
