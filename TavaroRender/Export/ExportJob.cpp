#include <TavaroRender/Export/Private/ExportJob.h>

#include <algorithm>
#include <cmath>
#include <variant>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Private/ExportChecks.h>

namespace tavaro {

namespace {

ExportSettings withEvenSides(ExportSettings settings) {
    settings.size = settings.size.evened();
    return settings;
}

DemoProject withSettings(DemoProject project, ExportSettings const& settings) {
    project.exportSettings = settings;
    // That format is a split, whatever the layout that the project is edited in.
    if (settings.presetID == "split-vertical" && project.usesCamera() && !project.layout.isSplit())
        project.layout.content = CanvasLayout::Split{.arrangement = SplitArrangement::cameraTop};
    return project;
}

/// Of the camera's movie, where a frame depends on it. What cannot be opened fails where its pictures are asked for.
std::optional<Size2> cameraSize(DemoProject const& project, ProjectPackage const& package) {
    bool const counts = project.camera.shape == CameraShape::full || project.camera.tracksFace;
    if (!project.usesCamera() || !counts) return std::nullopt;
    try {
        auto const info = MovieReader(package.assetURL(*project.cameraAsset)).info();
        return Size2{info.width, info.height};
    } catch (MediaError const&) {
        return std::nullopt;
    }
}

/// A frame of an export is what was asked for, or none.
RendererOptions stopping(RendererOptions options) {
    options.failure = EffectFailure::stop;
    return options;
}

}

ExportJob::ExportJob(DemoProject const& project, ProjectPackage const& package, ExportSettings const& wanted,
                     ExporterOptions const& options)
    : settings(withEvenSides(wanted))
    , options(options)
    , package(package)
    , composer(withSettings(project, settings), settings.size, cameraSize(project, package))
    , sources(package)
    , renderer(package, stopping(options.renderer)) {}

std::int64_t ExportJob::totalFrames() const {
    // A rounding error of the clips' times is no frame.
    double const frames = std::clamp(composer.duration(), 0.0, longestMovie) * static_cast<double>(settings.fps);
    return std::max<std::int64_t>(static_cast<std::int64_t>(std::ceil(frames - 1e-4)), 1);
}

void ExportJob::openMedia() { sources.open(composer.project()); }

void ExportJob::prepareDrawing() {
    try {
        renderer.prepare(composer.project(), static_cast<int>(settings.size.width),
                         static_cast<int>(settings.size.height));
    } catch (MediaError const& error) {
        auto const* image = std::get_if<BackgroundStyle::ImageFile>(&composer.project().background.content);
        if (image && error.kind() == MediaError::Kind::missing) throw ExportError::missingAsset(image->assetName);
        throw ExportError::readerFailed(error.detail());
    } catch (CameraTableError const& error) {
        if (error.kind() == CameraTableError::Kind::missing)
            throw ExportError::missingAsset(composer.project().camera.lutAsset.value_or(""));
        throw;
    }
}

ImageView ExportJob::frame(double at) {
    return renderer.render(composer.state(at), composer.project(), sources.pictures(composer, at));
}

}
