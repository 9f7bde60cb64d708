#include <TavaroRender/Export/ExportJob.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>
#include <variant>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroRender/Export/ExportChecks.h>
#include <TavaroRender/Export/ExportError.h>

namespace tavaro {

namespace {

ExportSettings withEvenSides(ExportSettings settings) {
    settings.size = settings.size.evened();
    return settings;
}

DemoProject withSettings(DemoProject project, ExportSettings const& settings) {
    project.exportSettings = settings;
    return project;
}

}

ExportJob::ExportJob(DemoProject const& project, ProjectPackage const& package, ExportSettings const& wanted,
                     ExporterOptions const& options)
    : settings(withEvenSides(wanted))
    , options(options)
    , composer(withSettings(project, settings), settings.size)
    , recording(package)
    , renderer(package, options.renderer) {}

std::int64_t ExportJob::totalFrames() const {
    // A rounding error of the clips' times is no frame.
    double const frames = std::clamp(composer.duration(), 0.0, longestMovie) * static_cast<double>(settings.fps);
    return std::max<std::int64_t>(static_cast<std::int64_t>(std::ceil(frames - 1e-4)), 1);
}

void ExportJob::openMedia() {
    std::set<std::string_view> assets;
    for (auto const& clip : composer.project().timeline.clips) assets.insert(clip.asset);
    for (auto const asset : assets) recording.open(asset);
}

void ExportJob::prepareBackground() {
    try {
        renderer.prepare(composer.project(), static_cast<int>(settings.size.width),
                         static_cast<int>(settings.size.height));
    } catch (MediaError const& error) {
        auto const* image = std::get_if<BackgroundStyle::ImageFile>(&composer.project().background.content);
        if (image && error.kind() == MediaError::Kind::missing) throw ExportError::missingAsset(image->assetName);
        throw ExportError::readerFailed(error.detail());
    }
}

ImageView ExportJob::frame(double at) {
    auto const source = composer.source(at);
    auto const screen = source ? recording.frame(source->asset, source->time) : VideoFrame();
    return renderer.render(composer.state(at), composer.project(), {screen});
}

}
