#include <TavaroRender/Export/Private/ExportJob.h>

#include <algorithm>
#include <cmath>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Export/FilmPainter.h>
#include <TavaroRender/Painter/Private/PaintChecks.h>

namespace tavaro {

namespace {

ExportSettings withEvenSides(ExportSettings settings) {
    settings.size = settings.size.evened();
    return settings;
}

}

ExportJob::ExportJob(DemoProject const& project, ProjectPackage const& package, ExportSettings const& wanted,
                     ExporterOptions const& options)
    : settings(withEvenSides(wanted))
    , options(options)
    , package(package)
    , painter(filmPainter(project, package, settings, options.renderer)) {}

std::int64_t ExportJob::totalFrames() const {
    // A rounding error of the clips' times is no frame.
    double const frames = std::clamp(painter.duration(), 0.0, longestFilm) * static_cast<double>(settings.fps);
    return std::max<std::int64_t>(static_cast<std::int64_t>(std::ceil(frames - 1e-4)), 1);
}

}
