#pragma once

#include <atomic>
#include <cstdint>

#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Values/TimeRange.h>
#include <TavaroRender/Export/Exporter.h>
#include <TavaroRender/Painter/FramePainter.h>

namespace tavaro {

/// What is to be written, by whom it is drawn, and whether somebody wants it to end.
struct ExportJob {
    ExportJob(DemoProject const& project, ProjectPackage const& package, ExportSettings const& wanted,
              ExporterOptions const& options);

    ExportSettings const settings; // the size is even
    ExporterOptions const options;
    ProjectPackage const package;
    FramePainter painter;
    TimeRange const part; // what is written of the film
    std::atomic<bool> isCancelled{false};

    /// Every frame of the part that begins before its end, at least one.
    std::int64_t totalFrames() const;
};

}
