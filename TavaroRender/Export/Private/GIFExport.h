#pragma once

#include <filesystem>

#include <TavaroRender/Export/Exporter.h>

namespace tavaro {

struct ExportJob;

/// Writes the job's GIF to `wanted`, or to the next free name, and returns where it lies. Draws some frames first, to
/// find the colours; none are kept. Throws `ExportError`
/// and `PaintError`.
std::filesystem::path writeGIF(ExportJob& job, std::filesystem::path const& wanted, Exporter::Progress const& progress);

}
