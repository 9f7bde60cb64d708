#pragma once

#include <filesystem>

namespace tavaro {

/// Writes a screen recording of an hour, 1920 × 1080 pixels: one minute at few frames a second, joined with itself.
void writeHourMovie(std::filesystem::path const& movie);

}
