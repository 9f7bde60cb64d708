#pragma once

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Zoom/ZoomEvent.h>

#include <optional>

namespace tavaro {

/// How far an event is present at output time t: 0 outside it and at its very ends, easing in over `rampIn`, 1 while it
/// holds, easing out over `rampOut`. When the ramps do not fit, the ramp-out begins where the ramp-in ends. With the
/// curves that leave 0…1, so does the presence.
double presence(ZoomEvent const& event, double at);

/// The centre of an event at a time, instead of the stored one; asked for every present event, so a follow path
/// answers for the events that follow the pointer and returns `event.center` for the others. Borrowed for one call.
using CentreProvider = FunctionRef<UnitPoint2(ZoomEvent const& event, double at)>;

inline UnitPoint2 centreOf(ZoomEvent const& event, double at, std::optional<CentreProvider> const& provider) {
    return provider ? (*provider)(event, at) : event.center;
}

}
