#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroRender/Composition/Private/FrameComposer.h>
#include <TavaroRender/Export/Exporter.h>
#include <TavaroRender/Export/Private/FrameSources.h>
#include <TavaroRender/Renderer/Renderer.h>

namespace tavaro {

/// All that one export works with, whatever kind of file it makes; also draws its stills.
struct ExportJob {
    ExportJob(DemoProject const& project, ProjectPackage const& package, ExportSettings const& wanted,
              ExporterOptions const& options);

    ExportSettings settings; // the size is even
    ExporterOptions const options;
    ProjectPackage const package;
    FrameComposer const composer;
    FrameSources sources;
    Renderer renderer;
    std::atomic<bool> isCancelled{false};

    /// Every frame that begins before the end, at least one.
    std::int64_t totalFrames() const;

    /// Opens the media that frames are made of and loads the background and the camera's colour table, or throws the
    /// error of the first that cannot be used.
    void openMedia();
    void prepareDrawing();

    /// The frame at that output time; good until the next one is drawn.
    ImageView frame(double at);
};

}
