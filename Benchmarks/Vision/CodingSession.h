#pragma once

#include <filesystem>

namespace tavaro {

/// Films minutes of work at 1080p60: code is typed with pauses, programs print, pages are scrolled, windows switched
/// and moved.
void filmSession(std::filesystem::path const& file, double minutes);

/// Films a session, scans it, and prints how long that takes and how much memory it needs, the readers' included.
void measureSession(std::filesystem::path const& folder, double minutes);

}
