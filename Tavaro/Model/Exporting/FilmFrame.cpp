#include <Tavaro/Model/Exporting/FilmFrame.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/FilmPainter.h>
#include <TavaroRender/Painter/PaintError.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

std::string timeText(double seconds) { return Timecode::format(seconds, Timecode::Fraction::hundredths); }

void expectInside(double at, double duration) {
    constexpr double tolerance = 1e-6;
    if (duration > 0 && !(at >= 0 && at <= duration + tolerance)) throw NoSuchFrame(at, duration);
}

ExportSettings settingsOf(DemoProject const& project, Size2 size) {
    auto settings = project.exportSettings;
    settings.size = size;
    return settings;
}

}

NoSuchFrame::NoSuchFrame(double at, double duration)
    : Error(fmt::format("There is no frame at {}: the video ends at {}.", timeText(at), timeText(duration))) {}

Size2 sizeWithin(Size2 canvas, std::int64_t longestSide) {
    constexpr std::int64_t shortest = 16;
    auto const longer = std::max(canvas.width, canvas.height);
    if (longer <= longestSide) return canvas;
    double const scale = static_cast<double>(longestSide) / static_cast<double>(longer);
    auto const scaled = [&](std::int64_t side) {
        return std::max<std::int64_t>(std::llround(static_cast<double>(side) * scale), shortest);
    };
    return {scaled(canvas.width), scaled(canvas.height)};
}

FramePainter framePainter(DemoProject const& project, ProjectPackage const& package, Size2 size) {
    return filmPainter(project, package, settingsOf(project, size));
}

void showFilm(FramePainter& painter, DemoProject const& project, Size2 size) {
    auto const even = size.evened();
    auto const film = filmProject(project, settingsOf(project, even));
    if (painter.canvas() != even) painter.resize(even);
    if (painter.project() != film) painter.show(film);
}

Image filmFrame(FramePainter& painter, double at) {
    expectInside(at, painter.duration());
    try {
        return painter.still(at);
    } catch (PaintError const& error) {
        throw ExportError::of(error); // the film could not be written either, and says so in these words
    }
}

}
