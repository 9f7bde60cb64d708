#pragma once

namespace tavaro {

struct DemoProject;

/// Length of the recording that the document's log belongs to: that of its longest asset on the timeline, or the time
/// of the last thing logged when that is later.
double recordedSeconds(DemoProject const& project);

}
