#include <TavaroAutomation/Pictures/Private/UIScreenshot.h>

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Pictures/Private/Downscaled.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/X11/StillPicture.h>
#include <TavaroMedia/Frames/PNG.h>

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr double shrinking = 0.8;
constexpr int shortestSide = 64; // no smaller one is tried, however many bytes it takes

StillPicture pictureOf(ScreenshotRequest const& request) try {
    CaptureSource const source =
        request.window ? CaptureSource(WindowSource{*request.window}) : CaptureSource(DisplaySource{});
    return takeStillPicture(source, request.display);
} catch (CaptureError const& error) {
    bool const lacksDisplay =
        error.kind == CaptureError::Kind::noDisplay || error.kind == CaptureError::Kind::unsupported;
    throw AutomationError(lacksDisplay ? AutomationError::Kind::noDisplay : AutomationError::Kind::noWindow,
                          error.what());
}

int scaled(int side, double scale) { return std::max(1, static_cast<int>(std::lround(side * scale))); }

UIScreenshot packed(StillPicture const& picture, double scale) {
    UIScreenshot result{.png = {},
                        .frame = {static_cast<double>(picture.frame.x), static_cast<double>(picture.frame.y),
                                  static_cast<double>(picture.frame.width), static_cast<double>(picture.frame.height)},
                        .width = scaled(picture.image.width(), scale),
                        .height = scaled(picture.image.height(), scale)};
    result.png =
        scale < 1 ? encodePNG(downscaled(picture.image.view(), result.width, result.height).view(), PNGPacking::quick)
                  : encodePNG(picture.image.view(), PNGPacking::quick);
    return result;
}

/// "100 + px × 800 ÷ 1600", or shorter where a pixel is a point.
std::string conversion(double origin, char const* pixel, double length, int pixels) {
    if (length == pixels) return fmt::format("{} + {}", origin, pixel);
    return fmt::format("{} + {} × {} ÷ {}", origin, pixel, length, pixels);
}

}

UIPoint UIScreenshot::point(double pixelX, double pixelY) const {
    return {frame.x + pixelX * frame.width / width, frame.y + pixelY * frame.height / height};
}

std::string UIScreenshot::caption(std::string const& name) const {
    return fmt::format(
        "{}, {} × {} pixels, covering screen points x {}–{}, y {}–{}. To click a pixel (px, py): x = {}, "
        "y = {}.",
        name.empty() ? "The main display" : fmt::format("The window “{}”", name), width, height, frame.x,
        frame.x + frame.width, frame.y, frame.y + frame.height, conversion(frame.x, "px", frame.width, width),
        conversion(frame.y, "py", frame.height, height));
}

UIScreenshot takeScreenshot(ScreenshotRequest const& request) {
    auto const picture = pictureOf(request);
    int const longest = std::max(picture.image.width(), picture.image.height());
    double scale = std::min(1.0, static_cast<double>(request.longestSide) / longest);
    auto result = packed(picture, scale);
    while (result.png.size() > request.mostBytes && std::max(result.width, result.height) > shortestSide)
        result = packed(picture, scale *= shrinking);
    return result;
}

}
