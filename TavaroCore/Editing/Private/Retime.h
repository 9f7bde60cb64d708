#pragma once

#include <TavaroCore/Values/TimeRange.h>

namespace tavaro {

struct DemoProject;

/// What `changeSpeed` does, for any positive rate: the range comes from `pictureRange` and lies inside the edit. A
/// range of 0.001 s or less, or a rate of 1, changes nothing.
void retime(DemoProject& project, TimeRange const& range, double rate);

}
