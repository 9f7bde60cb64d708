#pragma once

#include <vector>

namespace tavaro {

struct ScreenFinding;

/// Text on what is zoomed is lost by its pixels after a picture or two, and known again when it is read: until the
/// first reading and after the last it is covered on the way, and in the size, that its readings tell, for half a
/// second or as far as the picture goes. The readings are the findings in their order; one that was made longer since
/// stays so. Nothing is covered after `end`.
std::vector<ScreenFinding> withZooms(std::vector<ScreenFinding> findings, std::vector<ScreenFinding> const& readings,
                                     double end);

}
