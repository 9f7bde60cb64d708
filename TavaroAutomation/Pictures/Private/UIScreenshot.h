#pragma once

#include <TavaroAutomation/Values/UIRect.h>

#include <cstdint>
#include <optional>
#include <string>

namespace tavaro {

/// A picture of a window or of the main display, and what of the desktop it shows.
struct UIScreenshot {
    std::string png;
    UIRect frame;
    int width = 0; // of the picture, in pixels
    int height = 0;

    /// Where a pixel of the picture is on the desktop.
    UIPoint point(double pixelX, double pixelY) const;
    /// That rule in words. `name` is that of the window; empty for the main display.
    std::string caption(std::string const& name) const;
};

struct ScreenshotRequest {
    std::optional<std::uint32_t> window = {}; // the X id of its contents; none: the main display
    int longestSide = 1280;                   // of the picture; a smaller one stays as it is
    std::size_t mostBytes = 6U << 20;         // of the PNG: a larger one is scaled down further
    std::string display = {};                 // the X server; empty means `$DISPLAY`
};

/// A covered window is pictured as if it were not. Throws `AutomationError` (`noDisplay`, `noWindow`).
UIScreenshot takeScreenshot(ScreenshotRequest const& request = {});

}
