#include "MovingScreen.h"

#include <TavaroCapture/X11/Connection.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <random>
#include <thread>

namespace tavaro {

namespace {

constexpr double frameSeconds = 1.0 / 60;
constexpr std::uint32_t black = 0, white = 0xffffff, ink = 0x202020, blue = 0x3070e0;

void sleepUntil(double moment) {
    std::this_thread::sleep_for(std::chrono::duration<double>(std::max(moment - mediaClockNow(), 0.0)));
}

class Screen {
public:
    explicit Screen(std::string const& display)
        : connection_(display)
        , window_(xcb_generate_id(connection_.get()))
        , pen_(xcb_generate_id(connection_.get())) {
        auto* const c = connection_.get();
        std::uint32_t const values[] = {white, 1};
        xcb_create_window(c, XCB_COPY_FROM_PARENT, window_, connection_.root(), 0, 0, movingScreenWidth,
                          movingScreenHeight, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
        xcb_map_window(c, window_);
        xcb_create_gc(c, pen_, window_, 0, nullptr);
    }

    void draw(long frame) {
        constexpr int scroll = 3;
        xcb_copy_area(connection_.get(), window_, window_, pen_, 100, 100 + scroll, 100, 100, 1400, 880 - scroll);
        fill(100, 980 - scroll, 1400, scroll, white);
        if (frame % 7 < 4) {
            for (int i = 0; i < 120; ++i) fill(110 + random(1380), 980 - scroll, 1 + random(8), scroll, ink);
        }
        fill(1540 + static_cast<int>((frame + 299) % 300), 300, 60, 60, white);
        fill(1540 + static_cast<int>(frame % 300), 300, 60, 60, blue);
    }
    void drawField(std::uint32_t color) { fill(1540, 480, 340, 500, color); }
    /// Once it is on the screen; false when that is gone.
    bool show() {
        connection_.synchronize();
        return connection_.isAlive();
    }

private:
    void fill(int x, int y, int width, int height, std::uint32_t color) {
        xcb_change_gc(connection_.get(), pen_, XCB_GC_FOREGROUND, &color);
        xcb_rectangle_t const area{static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                                   static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height)};
        xcb_poly_fill_rectangle(connection_.get(), window_, pen_, 1, &area);
    }
    int random(int limit) { return static_cast<int>((random_ = random_ * 1664525u + 1013904223u) >> 16) % limit; }

    x11::Connection connection_;
    std::uint32_t const window_;
    std::uint32_t const pen_;
    unsigned random_ = 1;
};

/// Which frames flash, and where between two frames.
class Flashes {
public:
    explicit Flashes(Screen& screen, std::function<void(double)> const& flashed) : screen_(screen), flashed_(flashed) {
        screen_.drawField(black);
    }

    void follow(long frame, double frameBegan) {
        constexpr long lit = 12;
        if (frame == next_ + lit) screen_.drawField(black);
        if (frame == next_ + lit) next_ = frame + 80 + static_cast<long>(random_() % 40);
        if (frame != next_) return;
        sleepUntil(frameBegan + frameSeconds * std::uniform_real_distribution<>(0, 0.9)(random_));
        screen_.drawField(white);
        if (screen_.show()) flashed_(mediaClockNow());
    }

private:
    Screen& screen_;
    std::function<void(double)> const& flashed_;
    std::mt19937 random_{5};
    long next_ = 60;
};

}

void paintForever(std::string const& display, std::function<void(double)> const& flashed) {
    Screen screen(display);
    std::optional<Flashes> flashes;
    if (flashed) flashes.emplace(screen, flashed);
    double const start = mediaClockNow();
    for (long frame = 0;; ++frame) {
        double const begun = start + static_cast<double>(frame) * frameSeconds;
        screen.draw(frame);
        if (!screen.show()) return;
        if (flashes) flashes->follow(frame, begun);
        sleepUntil(begun + frameSeconds);
    }
}

}
