#pragma once

#include <TavaroCore/Values/TimeRange.h>

namespace tavaro {

struct DemoProject;

/// Makes the timeline ready for an edit of a span: closes the gaps between its clips, with every timed item in step,
/// and gives the span in the times that result, its ends moved onto the edges of clips that are within 0.001 s. So what
/// the edit does to the picture and to the items is the same to the last digit.
TimeRange pictureRange(DemoProject& project, TimeRange const& range);

}
