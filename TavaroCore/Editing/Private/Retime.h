#pragma once

#include <TavaroCore/Values/TimeRange.h>

namespace tavaro {

struct DemoProject;

inline constexpr double shortestSpan = 0.001; // seconds; nothing shorter can be split off

/// What `changeSpeed` does, for any positive rate: the range comes from `pictureRange` and lies inside the edit. A
/// range of `shortestSpan` or less, or a rate of 1, changes nothing.
void retime(DemoProject& project, TimeRange const& range, double rate);

}
