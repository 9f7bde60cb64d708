#pragma once

#include <Tavaro/Studio/Timeline/TimelineLayout.h>

namespace tavaro {

/// What of the timeline is at a point.
enum class TimelinePart {
    nothing,
    head, // of a lane
    ruler,
    playhead,
    lane, // where nothing is on it
    body, // of an item
    leadingEdge,
    trailingEdge,
    rampIn, // the handle of a zoom's ramp, or of a sound's fade
    rampOut,
};

constexpr bool isOnItem(TimelinePart part) { return part >= TimelinePart::body; }

struct TimelineHit {
    TimelinePart part = TimelinePart::nothing;
    double time = 0; // output seconds at the point
    std::size_t lane = 0;
    LanePlace place; // on an item
};

/// How exactly a hand points: fingers cover what a mouse can tell apart.
enum class TimelineHand { mouse, finger };

/// What a hit test looks at. Borrows all of it.
struct TimelineScene {
    TimelineLayout const& layout;
    TimelineView const& view;
    DemoProject const& project;
    double playhead = 0;
};

/// Where the handles of an item's ramps are, as points from its edges; none where it has no ramps, or no room for them.
struct RampHandles {
    double in = 0;
    double out = 0;
};
std::optional<RampHandles> rampHandles(TimelineScene const& scene, LaneItem const& item, double width);

TimelineHit hitTest(TimelineScene const& scene, double x, double y, TimelineHand hand = TimelineHand::mouse);

}
