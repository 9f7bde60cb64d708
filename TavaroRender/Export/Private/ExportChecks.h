#pragma once

#include <filesystem>

namespace tavaro {

struct ExportSettings;

/// What can be known to fail before the first frame is drawn, beside what frames ask for. The first two throw
/// `PaintError` for a size that cannot be drawn, and all of them `ExportError`.

/// The settings make a movie: size, rate, and a codec that goes into the container.
void requireMovie(ExportSettings const& settings);

/// The settings make a GIF: size, and a rate that players keep up.
void requireGIF(ExportSettings const& settings);

/// Makes the folder that the export goes to, with those above it.
void makeFolder(std::filesystem::path const& folder);

}
