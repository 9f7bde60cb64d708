#pragma once

#include <TavaroCore/Values/TimeRange.h>

#include <vector>

namespace tavaro {

/// The ranges ascending, those with no more than `gap` seconds between them as one.
std::vector<TimeRange> joined(std::vector<TimeRange> ranges, double gap);

}
