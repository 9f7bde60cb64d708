#pragma once

#include <Tavaro/Studio/Timeline/TimelineLayout.h>

#include <string>

namespace tavaro {

/// What is written into an item's box: a zoom's scale, an overlay's text, a clip's media.
std::string itemLabel(DemoProject const& project, Lane const& lane, LaneItem const& item);
/// The same as a sentence to be read aloud: "Zoom 1.8×, 0:04 to 0:07".
std::string itemDescription(DemoProject const& project, Lane const& lane, LaneItem const& item);
/// A clip's rate where it is not that of its recording: "2×", "0.5×", "Held". Empty else.
std::string speedBadge(VideoClip const& clip);

}
