#include <TavaroCore/Zoom/ZoomPresence.h>

#include <algorithm>
#include <limits>

namespace tavaro {

double presence(ZoomEvent const& event, double at) {
    if (!(event.start < at && at < event.end())) return 0;
    double const elapsed = at - event.start;
    if (event.rampIn > 0 && elapsed < event.rampIn) return apply(event.easing, elapsed / event.rampIn);
    double const outStart = std::max(event.rampIn, event.duration - event.rampOut);
    if (elapsed < outStart || event.rampOut <= 0) return 1;
    double const ramp = std::max(event.rampOut, std::numeric_limits<double>::epsilon());
    return 1 - apply(event.easing, (elapsed - outStart) / ramp);
}

}
