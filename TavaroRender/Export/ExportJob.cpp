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

/// What of the film lies in the range; where nothing does, the film's last moment.
TimeRange partOf(double film, std::optional<TimeRange> const& range) {
    if (!range) return {0, film};
    double const start = std::clamp(range->start, 0.0, film);
    return {start, std::clamp(range->end(), start, film) - start};
}

}

ExportJob::ExportJob(DemoProject const& project, ProjectPackage const& package, ExportSettings const& wanted,
                     ExporterOptions const& options)
    : settings(withEvenSides(wanted))
    , options(options)
    , package(package)
    , painter(filmPainter(project, package, settings, options.renderer))
    , part(partOf(painter.duration(), options.range)) {}

std::int64_t ExportJob::totalFrames() const {
    // A rounding error of the clips' times is no frame.
    double const frames = std::clamp(part.duration, 0.0, longestFilm) * static_cast<double>(settings.fps);
    return std::max<std::int64_t>(static_cast<std::int64_t>(std::ceil(frames - 1e-4)), 1);
}

}
