#pragma once

#include <filesystem>

#include <TavaroRender/Export/Exporter.h>

namespace tavaro {

struct ExportJob;

/// Writes the job's movie to `wanted`, or to the next free name, and returns where it lies. Throws `ExportError`
/// and `PaintError`.
std::filesystem::path writeMovie(ExportJob& job, std::filesystem::path const& wanted,
                                 Exporter::Progress const& progress);

}
