#pragma once

#include <TavaroCore/Values/Geometry.h>
#include <TavaroMedia/Movie/JoinMovies.h>

#include <filesystem>

namespace tavaro {

/// Writes a movie that shows nothing, for so many seconds, in place of a screen of which nothing can be read. Throws
/// `MediaError`.
JoinedMovie writeDarkScreen(std::filesystem::path const& file, Size2 size, double seconds);

}
