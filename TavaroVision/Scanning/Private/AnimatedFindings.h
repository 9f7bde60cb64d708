#pragma once

#include <vector>

namespace tavaro {

class BusyRegions;
struct ScreenFinding;

/// Text in a window that shrinks as it goes, or grows as it comes, is lost by its pixels, and legible for some frames
/// all the same: meanwhile all of the window is covered. Of a picture of that size; nothing is covered after `end`.
std::vector<ScreenFinding> withAnimations(std::vector<ScreenFinding> findings, BusyRegions const& regions, int width,
                                          int height, double end);

}
