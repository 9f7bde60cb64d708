#include <TavaroCapture/X11/StillPicture.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/X11/Desktop.h>
#include <TavaroCapture/X11/Private/ScreenGrabber.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <chrono>
#include <cstring>
#include <thread>

namespace tavaro {

namespace {

constexpr double settledSeconds = 0.2;  // without a change: the program has painted
constexpr double patienceSeconds = 2.0; // some never come to rest: a film, a blinking caret
constexpr std::chrono::milliseconds betweenGrabs{10};

/// Whether that window, above another, is one of its menus or lists.
bool isPopupOf(x11::Connection& connection, xcb_window_t above, xcb_window_t window) {
    auto const about = connection.ask<xcb_get_window_attributes, xcb_get_window_attributes_reply>(above);
    if (!about || !about->override_redirect) return false;
    auto const pid = connection.cardinals(x11::clientWindow(connection, window), "_NET_WM_PID");
    return !pid.empty() && pid == connection.cardinals(above, "_NET_WM_PID");
}

bool isShown(x11::Connection& connection, xcb_window_t window) {
    auto const about = connection.ask<xcb_get_window_attributes, xcb_get_window_attributes_reply>(window);
    return about && about->map_state == XCB_MAP_STATE_VIEWABLE && about->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
}

/// Whether all of the window can be read from the screen.
bool isInTheOpen(x11::Connection& connection, x11::ResolvedSource const& source) {
    auto const desktop = x11::frameOf(connection, connection.root());
    auto const tree = connection.ask<xcb_query_tree, xcb_query_tree_reply>(connection.root());
    if (!desktop || !tree || source.frame.intersection({0, 0, desktop->width, desktop->height}) != source.frame)
        return false;
    auto const* const children = xcb_query_tree_children(tree.get()); // bottom to top
    bool isAbove = false;
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        auto const frame = isAbove ? x11::frameOf(connection, children[i]) : std::nullopt;
        bool const meets = frame && !frame->intersection(source.frame).isEmpty();
        if (meets && isShown(connection, children[i]) && !isPopupOf(connection, children[i], source.topLevel))
            return false;
        isAbove = isAbove || children[i] == source.topLevel;
    }
    return true;
}

void expectPicture(ScreenSource::Outcome outcome) {
    if (outcome == ScreenSource::Outcome::lost)
        throw CaptureError(CaptureError::Kind::captureLost, "The window was closed before its picture was taken.");
}

/// A window that begins to be kept off-screen is empty until its program has painted it.
void settle(ScreenSource& source) {
    double const start = mediaClockNow();
    double changedAt = start;
    for (double now = start; now - changedAt < settledSeconds && now - start < patienceSeconds; now = mediaClockNow()) {
        auto const outcome = source.grab(now);
        expectPicture(outcome);
        if (outcome == ScreenSource::Outcome::changed) changedAt = now;
        std::this_thread::sleep_for(betweenGrabs);
    }
}

Image opaque(ImageView const& picture) {
    Image result(picture.width, picture.height);
    for (int y = 0; y < picture.height; ++y) {
        auto const* from = picture.row(y);
        auto* to = result.row(y);
        for (int x = 0; x < picture.width; ++x, from += 4, to += 4) {
            std::uint8_t const pixel[] = {from[2], from[1], from[0], 255};
            std::memcpy(to, pixel, sizeof pixel);
        }
    }
    return result;
}

}

StillPicture takeStillPicture(CaptureSource const& source, std::string const& display) {
    x11::Connection connection(display);
    auto const resolved = x11::resolve(connection, source);
    bool const isWindow = resolved.topLevel != XCB_NONE;
    bool const readsScreen = !isWindow || isInTheOpen(connection, resolved);
    x11::ScreenGrabber grabber(readsScreen ? AreaSource{resolved.frame} : source, display);
    if (!readsScreen) settle(grabber);
    expectPicture(grabber.grab(mediaClockNow()));
    return {opaque(grabber.picture()), grabber.frame()};
}

}
