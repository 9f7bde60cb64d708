#pragma once

#include "../TestDisplay.h"

#include <TavaroCapture/Wayland/Private/SharedDesktop.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <array>
#include <cstddef>

namespace tavaro::wayland {

/// What a desktop shares, looked at as a take would.
struct SharedPictures {
    using Color = std::array<int, 3>; // blue, green, red
    static constexpr Color red{0, 0, 255}, green{0, 255, 0};

    static SharedDesktop shared(CaptureSource const& source) {
        auto result = shareDesktop(source, 60);
        result.screen->grab(mediaClockNow());
        return result;
    }
    static Color at(SharedDesktop const& desktop, int x, int y) {
        auto const* const pixel = desktop.screen->picture().row(y) + std::ptrdiff_t{4} * x;
        return {pixel[0], pixel[1], pixel[2]};
    }
    static bool shows(SharedDesktop const& desktop, int x, int y, Color const& color) {
        return eventually([&] {
            desktop.screen->grab(mediaClockNow());
            return at(desktop, x, y) == color;
        });
    }
};

}
