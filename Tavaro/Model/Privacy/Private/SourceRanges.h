#pragma once

#include <TavaroCore/Values/TimeRange.h>

#include <vector>

namespace tavaro {

/// Ascending and apart; what has no length is left out.
std::vector<TimeRange> joinedRanges(std::vector<TimeRange> ranges);
/// What of `length` seconds the ranges leave out, which ascend and are apart. Less than a moment is nothing.
std::vector<TimeRange> missingRanges(std::vector<TimeRange> const& ranges, double length);
/// What of `range` the others leave out, which ascend and are apart.
std::vector<TimeRange> outside(TimeRange const& range, std::vector<TimeRange> const& others);

}
