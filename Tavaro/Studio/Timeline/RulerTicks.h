#pragma once

#include <TavaroCore/Values/TimeRange.h>

#include <string>
#include <vector>

namespace tavaro {

struct RulerTick {
    double time = 0;   // seconds
    std::string label; // none: a small one between those that have one
};

struct RulerScale {
    double secondsPerPoint = 0;
    double framesPerSecond = 60;
    double labelSpacing = 84; // points that a label has for itself, at least
};

/// The ticks of a span of time at whole frames, seconds, minutes or hours, ascending, as many as have room. Before 0
/// there are none: cards have no time of the edit.
std::vector<RulerTick> rulerTicks(TimeRange const& visible, RulerScale const& scale);

}
