#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tavaro {

/// A time in which a display did not answer, or the machine stood still: whoever films it then can get no picture.
struct DisplayStall {
    double from = 0;  // moments of the media clock
    double woken = 0; // when the machine went on
    double to = 0;
};

/// Asks the display for a sign of life every few milliseconds until it is gone, before everything else that runs, and
/// prints each stall of more than `shortestStall` as a line.
inline constexpr double shortestStall = 0.012; // seconds
void watchForever(std::string const& display);
/// Those in a file of such lines.
std::vector<DisplayStall> stallsIn(std::filesystem::path const& lines);

}
