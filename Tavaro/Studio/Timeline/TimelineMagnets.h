#pragma once

#include <Tavaro/Studio/Timeline/TimelineLayout.h>

#include <functional>

namespace tavaro {

/// What a dragged time catches on: edges of what the lanes show, the playhead, the ends of the film.
struct TimelineMagnets {
    TimelineLayout const& layout;
    double playhead = 0;
    double radius = 0;                                   // seconds
    std::function<bool(LaneItem const&)> isLeftOut = {}; // what is dragged itself

    /// The nearest within the radius; logarithmic in the number of items.
    std::optional<double> nearest(double time) const;
};

}
