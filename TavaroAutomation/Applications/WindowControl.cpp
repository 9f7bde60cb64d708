#include <TavaroAutomation/Applications/Private/WindowControl.h>

#include <TavaroAutomation/Applications/Private/WindowManager.h>
#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroCapture/X11/Desktop.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <set>
#include <thread>
#include <utility>

namespace tavaro::x11 {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t pager = 2; // who asks

/// A pager's request, since window managers refuse a program's own to keep focus from being stolen.
void askToActivate(Connection& connection, xcb_window_t window) {
    askWindowManager(connection, window, "_NET_ACTIVE_WINDOW", {pager});
}

std::optional<std::uint32_t> cardinal(Connection& connection, xcb_window_t window, char const* property) {
    auto const values = connection.cardinals(window, property);
    return values.empty() ? std::nullopt : std::optional(values[0]);
}

/// Some window managers only mark a window on another desktop as one that wants attention.
void showDesktopOf(Connection& connection, xcb_window_t window, std::stop_token const& stop) {
    constexpr std::uint32_t onAll = 0xFFFFFFFF;
    auto const wanted = cardinal(connection, window, "_NET_WM_DESKTOP");
    auto const isShown = [&] { return cardinal(connection, connection.root(), "_NET_CURRENT_DESKTOP") == wanted; };
    if (!wanted || *wanted == onAll || isShown()) return;
    askWindowManager(connection, connection.root(), "_NET_CURRENT_DESKTOP", {*wanted});
    waitUntil(Clock::now() + 1s, stop, isShown);
}

void unroll(Connection& connection, OpenWindow const& window) {
    constexpr std::uint32_t remove = 0;
    if (window.isShaded)
        askWindowManager(connection, window.window, "_NET_WM_STATE",
                         {remove, connection.atom("_NET_WM_STATE_SHADED"), 0, pager});
}

void raise(Connection& connection, OpenWindow const& window) {
    std::uint32_t const above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection.get(), window.topLevel, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_set_input_focus(connection.get(), XCB_INPUT_FOCUS_PARENT, window.window, XCB_CURRENT_TIME);
}

/// Window managers grow a window from its icon step by step, and programs lay it out anew.
void waitUntilStill(Connection& connection, xcb_window_t window, std::stop_token const& stop) {
    std::optional<PixelRect> before;
    auto const isStill = [&] {
        auto const now = frameOf(connection, topLevel(connection, window));
        return std::exchange(before, now) == now && now;
    };
    waitUntil(Clock::now() + 1s, stop, isStill, 80ms);
}

bool isOnDisplay(std::vector<UIRect> const& displays, UIPoint const& point) {
    return std::ranges::any_of(displays, [&](UIRect const& display) { return display.contains(point); });
}

/// Without the room that panels keep, where the window manager says so.
std::vector<UIRect> roomOnDisplays(Connection& connection) {
    auto const room = connection.cardinals(connection.root(), "_NET_WORKAREA"); // x, y, width, height of each desktop
    std::vector<UIRect> result;
    for (auto const& display : displays(connection)) {
        auto const whole = uiRect(display.frame);
        auto const free = room.size() < 4
                              ? whole
                              : whole.intersection({static_cast<double>(room[0]), static_cast<double>(room[1]),
                                                    static_cast<double>(room[2]), static_cast<double>(room[3])});
        result.push_back(free.isEmpty() ? whole : free);
    }
    return result;
}

/// That which shows most of the window, else the first.
UIRect const& displayOf(std::vector<UIRect> const& displays, UIRect const& window) {
    auto const shown = [&](UIRect const& display) {
        auto const part = display.intersection(window);
        return part.width * part.height;
    };
    return *std::ranges::max_element(displays, {}, shown);
}

/// By how much a stretch has to move to be within the room; 0 where it does not fit.
double shiftInto(double begin, double length, double room, double roomLength) {
    if (length > roomLength) return 0;
    return std::clamp(begin, room, room + roomLength - length) - begin;
}

/// The whole window where there is room, else the part.
UIPoint shiftOnto(UIRect const& display, UIRect const& window, UIRect const& part) {
    auto const& wide = window.width <= display.width ? window : part;
    auto const& high = window.height <= display.height ? window : part;
    return {shiftInto(wide.x, wide.width, display.x, display.width),
            shiftInto(high.y, high.height, display.y, display.height)};
}

void moveTo(Connection& connection, OpenWindow const& window, UIPoint const& corner) {
    constexpr std::uint32_t ownCorner = 10, hasX = 1U << 8, hasY = 1U << 9, asPager = pager << 12;
    auto const x = static_cast<std::uint32_t>(std::lround(corner.x)),
               y = static_cast<std::uint32_t>(std::lround(corner.y));
    if (hasWindowManager(connection))
        return askWindowManager(connection, window.window, "_NET_MOVERESIZE_WINDOW",
                                {ownCorner | hasX | hasY | asPager, x, y});
    std::array<std::uint32_t, 2> const place{x, y};
    xcb_configure_window(connection.get(), window.topLevel, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place.data());
}

/// The pixels of some of its rows; empty when it is gone or not shown.
std::vector<std::uint32_t> sampled(Connection& connection, xcb_window_t window) {
    constexpr int rows = 40;
    auto const geometry = connection.ask<xcb_get_geometry, xcb_get_geometry_reply>(window);
    std::vector<std::uint32_t> pixels;
    if (!geometry) return pixels;
    for (int row = 0; row < rows; ++row) {
        auto const y = static_cast<std::int16_t>(geometry->height * (2 * row + 1) / (2 * rows));
        auto const picture = connection.ask<xcb_get_image, xcb_get_image_reply>(std::uint8_t{XCB_IMAGE_FORMAT_Z_PIXMAP},
                                                                                window, std::int16_t{0}, y,
                                                                                geometry->width, std::uint16_t{1}, ~0U);
        if (!picture) return {};
        auto const old = pixels.size();
        auto const size = static_cast<std::size_t>(xcb_get_image_data_length(picture.get()));
        pixels.resize(old + size / sizeof(std::uint32_t));
        std::memcpy(pixels.data() + old, xcb_get_image_data(picture.get()), size / 4 * 4);
    }
    return pixels;
}

std::size_t colorsIn(std::vector<std::uint32_t> const& pixels, std::size_t most) {
    std::set<std::uint32_t> seen;
    for (auto const pixel : pixels) {
        if (seen.size() < most) seen.insert(pixel & 0xFFFFFFU);
    }
    return seen.size();
}

bool isMuchOther(std::vector<std::uint32_t> const& before, std::vector<std::uint32_t> const& now) {
    if (before.size() != now.size()) return true;
    std::size_t changed = 0;
    for (std::size_t i = 0; i < now.size(); ++i) changed += before[i] != now[i] ? 1 : 0;
    constexpr std::size_t caret = 20; // less than a twentieth of the window is no change
    return changed * caret > now.size();
}

}

bool waitUntil(Deadline deadline, std::stop_token const& stop, std::function<bool()> const& isSo,
               std::chrono::milliseconds pause) {
    while (!isSo()) {
        expectNotStopped(stop);
        if (Clock::now() >= deadline) return false;
        std::this_thread::sleep_for(pause);
    }
    return true;
}

bool bringToFront(Connection& connection, OpenWindow const& window, std::stop_token const& stop) {
    bool const wasShown = isViewable(connection, window.window) && !window.isShaded;
    if (hasWindowManager(connection)) {
        showDesktopOf(connection, window.window, stop);
        unroll(connection, window);
        askToActivate(connection, window.window);
    } else {
        raise(connection, window);
    }
    connection.synchronize();
    bool const isInFront = waitUntil(Clock::now() + 1s, stop, [&] {
        auto const active = activeWindow(connection);
        return (active == window.window || active == window.topLevel) && isViewable(connection, window.window);
    });
    if (!wasShown) waitUntilStill(connection, window.window, stop);
    return isInFront;
}

bool bringOnDisplay(Connection& connection, OpenWindow const& window, UIRect const& part, std::stop_token const& stop) {
    auto const displays = roomOnDisplays(connection);
    if (isOnDisplay(displays, part.center())) return false;
    auto const before = frameOf(connection, topLevel(connection, window.window));
    auto const shift = shiftOnto(displayOf(displays, window.frame), window.frame, part);
    if (shift == UIPoint{}) return false;
    moveTo(connection, window, {window.contents.x + shift.x, window.contents.y + shift.y});
    connection.synchronize();
    waitUntil(Clock::now() + 1s, stop,
              [&] { return frameOf(connection, topLevel(connection, window.window)) != before; });
    waitUntilStill(connection, window.window, stop);
    return true;
}

void waitUntilPainted(Connection& connection, xcb_window_t window, std::stop_token const& stop) {
    constexpr std::size_t many = 16; // colours: letters and icons are there
    auto const latest = Clock::now() + 3s;
    auto since = Clock::now();
    auto before = sampled(connection, window);
    while (Clock::now() < latest) {
        std::this_thread::sleep_for(40ms);
        expectNotStopped(stop);
        auto now = sampled(connection, window);
        if (isMuchOther(before, now)) since = Clock::now();
        auto const colors = colorsIn(now, many);
        auto const calm = Clock::now() - since;
        if ((colors >= many && calm >= 200ms) || (colors > 1 && calm >= 700ms)) return;
        before = std::move(now);
    }
}

}
