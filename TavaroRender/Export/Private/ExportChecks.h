#pragma once

#include <filesystem>

namespace tavaro {

struct DemoProject;
struct ExportSettings;

/// What can be known to fail before the first frame is drawn. Each throws `ExportError`.

/// The longest movie, in seconds, that times are exact for.
inline constexpr double longestMovie = 1e7;

/// Frames of that size can be drawn.
void requireDrawable(ExportSettings const& settings);

/// The settings make a movie: size, rate, and a codec that goes into the container.
void requireMovie(ExportSettings const& settings);

/// The settings make a GIF: size, and a rate that players keep up.
void requireGIF(ExportSettings const& settings);

/// The project shows a recording or a title card in its `duration` of seconds, and not for ever.
void requireSource(DemoProject const& project, double duration);

/// Makes the folder that the export goes to, with those above it.
void makeFolder(std::filesystem::path const& folder);

}
