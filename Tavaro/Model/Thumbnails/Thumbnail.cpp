#include <Tavaro/Model/Thumbnails/Thumbnail.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroRender/Painter/FramePainter.h>

#include <spdlog/spdlog.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr std::int64_t longestSide = 480; // pixels

Size2 thumbnailSize(Size2 canvas) {
    double const longest = static_cast<double>(std::max({canvas.width, canvas.height, std::int64_t{1}}));
    double const scale = std::min(longestSide / longest, 1.0);
    auto const side = [&](std::int64_t of) {
        return std::max<std::int64_t>(std::llround(static_cast<double>(of) * scale), 16);
    };
    return Size2{side(canvas.width), side(canvas.height)}.evened();
}

/// Of what cannot be drawn as it is meant there is no picture.
void draw(ProjectPackage const& package, DemoProject const& project) {
    FramePainter painter(package, thumbnailSize(project.canvas), {.failure = EffectFailure::stop});
    painter.show(project);
    writePNG(package.thumbnailURL(), painter.frame(tellingMoment(project)));
}

}

double tellingMoment(DemoProject const& project) {
    double const length = project.duration();
    auto const& zooms = project.zoomEvents;
    auto const first = std::min_element(zooms.begin(), zooms.end(),
                                        [](ZoomEvent const& a, ZoomEvent const& b) { return a.start < b.start; });
    double const at = first == zooms.end() ? length / 3 : first->start + std::min(first->rampIn, first->duration / 2);
    return project.introDuration() + std::clamp(at, 0.0, std::max(length, 0.0));
}

std::optional<std::filesystem::path> writeThumbnail(ProjectPackage const& package, DemoProject const& project) {
    try {
        draw(package, project);
        return package.thumbnailURL();
    } catch (std::exception const& error) {
        spdlog::debug("The project “{}” has no thumbnail: {}", package.url().string(), error.what());
        return std::nullopt;
    }
}

}
