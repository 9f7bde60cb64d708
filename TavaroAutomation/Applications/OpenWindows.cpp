#include <TavaroAutomation/Applications/Private/OpenWindows.h>

#include <TavaroAutomation/Errors/AutomationError.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace tavaro::x11 {

namespace {

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

constexpr char const* launchMark = "_TAVARO_DESKTOP_ENTRY";

OpenWindow::Launch launchOf(Connection& connection, xcb_window_t window, int pid) {
    if (auto marked = connection.text(window, launchMark); !marked.empty())
        return {.entry = std::move(marked), .isOwn = true};
    return pid == 0 ? OpenWindow::Launch{} : launchOf(pid);
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

UIRect uiRect(PixelRect const& rect) {
    return {static_cast<double>(rect.x), static_cast<double>(rect.y), static_cast<double>(rect.width),
            static_cast<double>(rect.height)};
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
    auto const pid = processOf(connection, window);
    auto const states = connection.cardinals(window, "_NET_WM_STATE");
    auto const is = [&](char const* state) {
        return std::ranges::find(states, connection.atom(state)) != states.end();
    };
    return OpenWindow{.window = window,
                      .topLevel = topLevel,
                      .pid = pid,
                      .title = windowTitle(connection, window),
                      .windowClass = windowClass(connection, window),
                      .application = applicationOf(connection, window),
                      .transientFor = transientFor(connection, window),
                      .gtkApplicationID = connection.text(window, "_GTK_APPLICATION_ID"),
                      .launch = launchOf(connection, window, pid),
                      .contents = contentsOf(connection, window),
                      .frame = uiRect(*frame),
                      .isPopup = isPopup,
                      .isMinimized = isIcon,
                      .isShaded = is("_NET_WM_STATE_SHADED"),
                      .isModal = is("_NET_WM_STATE_MODAL"),
                      .isSplash = hasType(connection, window, {"_NET_WM_WINDOW_TYPE_SPLASH"})};
}

void markLaunch(Connection& connection, xcb_window_t window, std::string const& entry) {
    xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, window, connection.atom(launchMark),
                        connection.atom("UTF8_STRING"), 8, static_cast<std::uint32_t>(entry.size()), entry.data());
    connection.synchronize();
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
