#include <TavaroAutomation/Applications/Private/OpenWindows.h>

#include <TavaroAutomation/Errors/AutomationError.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace tavaro::x11 {

namespace {

UIRect uiRect(PixelRect const& rect) {
    return {static_cast<double>(rect.x), static_cast<double>(rect.y), static_cast<double>(rect.width),
            static_cast<double>(rect.height)};
}

bool hasType(Connection& connection, xcb_window_t window, std::initializer_list<char const*> types) {
    auto const own = connection.cardinals(window, "_NET_WM_WINDOW_TYPE");
    return std::ranges::any_of(
        types, [&](char const* type) { return std::ranges::find(own, connection.atom(type)) != own.end(); });
}

/// On the desktop, without the frame that the window manager adds.
UIRect contentsOf(Connection& connection, xcb_window_t window) {
    auto const geometry = connection.ask<xcb_get_geometry, xcb_get_geometry_reply>(window);
    auto const place = connection.ask<xcb_translate_coordinates, xcb_translate_coordinates_reply>(
        window, connection.root(), std::int16_t{0}, std::int16_t{0});
    if (!geometry || !place) return {};
    return uiRect({place->dst_x, place->dst_y, geometry->width, geometry->height});
}

std::string titleOf(Connection& connection, xcb_window_t window) {
    auto title = connection.text(window, "_NET_WM_NAME");
    return title.empty() ? connection.text(window, "WM_NAME") : title;
}

/// Launchers leave the entry's name, and for which process, in the variables of what they start. Whatever that starts
/// has them too. A program that was started here is the first of its session.
OpenWindow::Launch launchOf(int pid) {
    constexpr std::size_t most = 1U << 20;
    constexpr std::string_view entry = "GIO_LAUNCHED_DESKTOP_FILE=", process = "GIO_LAUNCHED_DESKTOP_FILE_PID=";
    std::ifstream file("/proc/" + std::to_string(pid) + "/environ", std::ios::binary);
    OpenWindow::Launch result{.isOwn = ::getsid(pid) == pid};
    std::string each;
    for (std::size_t read = 0; read < most && std::getline(file, each, '\0'); read += each.size() + 1) {
        if (each.starts_with(entry)) result.entry = std::filesystem::path(each.substr(entry.size())).stem().string();
        if (each.starts_with(process) && each.substr(process.size()) == std::to_string(pid)) result.isOwn = true;
    }
    return result;
}

/// The window that a dialog belongs to.
xcb_window_t transientFor(Connection& connection, xcb_window_t window) {
    auto const other = connection.cardinals(window, "WM_TRANSIENT_FOR");
    return other.empty() ? XCB_NONE : other[0];
}

bool isMinimized(Connection& connection, xcb_window_t window) {
    constexpr std::uint32_t iconic = 3;
    auto const state = connection.cardinals(window, "WM_STATE");
    return !state.empty() && state[0] == iconic;
}

}

std::optional<OpenWindow> openWindow(Connection& connection, xcb_window_t topLevel) {
    auto const about = connection.ask<xcb_get_window_attributes, xcb_get_window_attributes_reply>(topLevel);
    auto const frame = shownFrameOf(connection, topLevel);
    if (!about || !frame || about->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT) return std::nullopt;
    bool const isPopup = about->override_redirect != 0;
    auto const window = isPopup ? topLevel : clientWindow(connection, topLevel);
    bool const isShown = about->map_state == XCB_MAP_STATE_VIEWABLE;
    bool const isIcon = isMinimized(connection, window);
    if ((!isShown && !isIcon) ||
        hasType(connection, window,
                {"_NET_WM_WINDOW_TYPE_DESKTOP", "_NET_WM_WINDOW_TYPE_DOCK", "_NET_WM_WINDOW_TYPE_TOOLTIP"}))
        return std::nullopt;
    auto const pid = connection.cardinals(window, "_NET_WM_PID");
    OpenWindow result{.window = window,
                      .topLevel = topLevel,
                      .pid = pid.empty() ? 0 : static_cast<int>(pid[0]),
                      .title = titleOf(connection, window),
                      .windowClass = windowClass(connection, window),
                      .application = applicationOf(connection, window),
                      .transientFor = transientFor(connection, window),
                      .gtkApplicationID = connection.text(window, "_GTK_APPLICATION_ID"),
                      .contents = contentsOf(connection, window),
                      .frame = uiRect(*frame),
                      .isPopup = isPopup,
                      .isMinimized = isIcon,
                      .isSplash = hasType(connection, window, {"_NET_WM_WINDOW_TYPE_SPLASH"})};
    if (result.pid != 0) result.launch = launchOf(result.pid);
    return result;
}

std::vector<OpenWindow> openWindows(Connection& connection) {
    std::vector<OpenWindow> result;
    auto const tree = connection.ask<xcb_query_tree, xcb_query_tree_reply>(connection.root());
    if (!tree) throw AutomationError(AutomationError::Kind::failed, "The display went away.");
    auto const* const bottom = xcb_query_tree_children(tree.get());
    for (int i = xcb_query_tree_children_length(tree.get()) - 1; i >= 0; --i) {
        if (auto window = openWindow(connection, bottom[i])) result.push_back(std::move(*window));
    }
    return result;
}

}
