#include <TavaroCapture/X11/Desktop.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/Sources/InstalledEntries.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fmt/format.h>
#include <xcb/randr.h>
#include <xcb/res.h>

namespace tavaro::x11 {

namespace {

PixelRect rootFrame(Connection& connection) {
    // The setup's size is that of the connection's start; monitors come and go later.
    auto const now = frameOf(connection, connection.root());
    if (now) return {0, 0, now->width, now->height};
    return {0, 0, connection.screen().width_in_pixels, connection.screen().height_in_pixels};
}

bool hasMonitors(Connection& connection) {
    if (!connection.extension(xcb_randr_id)) return false;
    auto const version = connection.ask<xcb_randr_query_version, xcb_randr_query_version_reply>(1u, 5u);
    return version && (version->major_version > 1 || version->minor_version >= 5);
}

std::vector<DisplayInfo> monitors(Connection& connection) {
    std::vector<DisplayInfo> result;
    if (!hasMonitors(connection)) return result;
    auto const all = connection.ask<xcb_randr_get_monitors, xcb_randr_get_monitors_reply>(connection.root(), true);
    if (!all) return result;
    for (auto it = xcb_randr_get_monitors_monitors_iterator(all.get()); it.rem; xcb_randr_monitor_info_next(&it)) {
        auto const& m = *it.data;
        result.push_back({fmt::format("display-{}", result.size() + 1), connection.atomName(m.name),
                          PixelRect{m.x, m.y, m.width, m.height}, m.primary != 0});
    }
    return result;
}

/// Window types that nobody records or clicks "into": the desktop's own furniture.
bool isFurniture(Connection& connection, xcb_window_t window) {
    for (xcb_atom_t const type : connection.cardinals(window, "_NET_WM_WINDOW_TYPE")) {
        if (type == connection.atom("_NET_WM_WINDOW_TYPE_DESKTOP") ||
            type == connection.atom("_NET_WM_WINDOW_TYPE_DOCK"))
            return true;
    }
    return false;
}

bool isMinimized(Connection& connection, xcb_window_t window) {
    auto const state = connection.cardinals(window, "WM_STATE");
    return !state.empty() && state[0] == 3; // IconicState
}

/// The file name of the program that says the window is its; empty where that is unknown.
std::string programOf(Connection& connection, xcb_window_t window) {
    int const process = processOf(connection, window);
    if (process == 0) return {};
    std::error_code code;
    return std::filesystem::read_symlink(fmt::format("/proc/{}/exe", process), code).filename().string();
}

/// The process whose connection made the window, as the server sees it. 0 where it is on another machine.
int processOfClient(Connection& connection, xcb_window_t window) {
    if (!connection.extension(xcb_res_id)) return 0;
    auto const version =
        connection.ask<xcb_res_query_version, xcb_res_query_version_reply>(std::uint8_t{1}, std::uint8_t{2});
    if (!version ||
        std::pair(version->server_major, version->server_minor) < std::pair<std::uint16_t, std::uint16_t>(1, 2))
        return 0;
    xcb_res_client_id_spec_t const wanted{.client = window, .mask = XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    auto const reply = connection.ask<xcb_res_query_client_ids, xcb_res_query_client_ids_reply>(1U, &wanted);
    if (!reply) return 0;
    auto const first = xcb_res_query_client_ids_ids_iterator(reply.get());
    bool const isThere = first.rem > 0 && xcb_res_client_id_value_value_length(first.data) > 0;
    return isThere ? static_cast<int>(*xcb_res_client_id_value_value(first.data)) : 0;
}

WindowInfo describe(Connection& connection, xcb_window_t window, PixelRect const& frame) {
    auto const identity = applicationOf(connection, window);
    return {.window = window,
            .title = windowTitle(connection, window),
            .application = identity.name,
            .bundleID = identity.bundleID,
            .pid = processOf(connection, window),
            .frame = frame,
            .isMinimized = isMinimized(connection, window)};
}

/// Without a window manager: every mapped child of the root that asks to be managed, bottom to top.
std::vector<xcb_window_t> unmanagedWindows(Connection& connection) {
    std::vector<xcb_window_t> result;
    auto const tree = connection.ask<xcb_query_tree, xcb_query_tree_reply>(connection.root());
    if (!tree) return result;
    auto const* const children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        auto const about = connection.ask<xcb_get_window_attributes, xcb_get_window_attributes_reply>(children[i]);
        if (about && about->map_state == XCB_MAP_STATE_VIEWABLE && !about->override_redirect &&
            about->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT)
            result.push_back(children[i]);
    }
    return result;
}

[[noreturn]] void fail(std::string const& sentence) { throw CaptureError(CaptureError::Kind::badSource, sentence); }
[[noreturn]] void failMissing(std::string const& sentence) {
    throw CaptureError(CaptureError::Kind::noSuchSource, sentence);
}

PixelRect visible(Connection& connection, PixelRect const& frame, std::string const& what) {
    PixelRect const inside = frame.intersection(rootFrame(connection));
    if (frame.isEmpty()) fail(fmt::format("{} cannot be recorded: its size is zero.", what));
    if (inside.width < 2 || inside.height < 2)
        fail(fmt::format("{} cannot be recorded: it lies outside the screen.", what));
    return inside;
}

/// Of the main display where the id is empty.
DisplayInfo displayOf(Connection& connection, std::string const& id) {
    auto const all = displays(connection);
    for (auto const& display : all) {
        if (id.empty() ? display.isMain : display.id == id || display.id == "display-" + id || display.name == id)
            return display;
    }
    failMissing(fmt::format("There is no display “{}”; here there {} {}{}.", id, all.size() == 1 ? "is" : "are",
                            all.front().id, all.size() == 1 ? "" : " to " + all.back().id));
}

/// By which it is found again when displays change; empty where the server has none by name.
std::string lastingName(Connection& connection, DisplayInfo const& display) {
    return monitors(connection).empty() ? "" : display.name;
}

ResolvedSource resolveDisplay(Connection& connection, DisplaySource const& source) {
    auto const display = displayOf(connection, source.id);
    return {visible(connection, display.frame, "The display " + display.id), lastingName(connection, display)};
}

/// `what` names the area in a sentence.
PixelRect onDesktop(Connection& connection, AreaSource const& area, std::string const& what) {
    if (area.display.empty() || area.rect.isEmpty()) return area.rect;
    auto const display = displayOf(connection, area.display);
    auto const inside = area.rect.intersection({0, 0, display.frame.width, display.frame.height});
    if (inside.isEmpty()) fail(fmt::format("{} cannot be recorded: it lies outside {}.", what, display.id));
    return {inside.x + display.frame.x, inside.y + display.frame.y, inside.width, inside.height};
}

ResolvedSource resolveArea(Connection& connection, AreaSource const& source) {
    auto const& rect = source.rect;
    auto const what = fmt::format("The area {},{},{},{}", rect.x, rect.y, rect.width, rect.height);
    auto const frame = shaped(visible(connection, onDesktop(connection, source, what), what), source.shape);
    if (source.display.empty()) return {frame};
    return {frame, lastingName(connection, displayOf(connection, source.display))};
}

ResolvedSource resolveWindow(Connection& connection, xcb_window_t window, bool wholeApplication) {
    std::string const what = fmt::format("The window {}", window);
    if (window == connection.root() || !frameOf(connection, window))
        failMissing(fmt::format("There is no window {}; it may have been closed.", window));
    xcb_window_t const top = topLevel(connection, window);
    if (!isViewable(connection, window)) fail(what + " cannot be recorded: it is minimised or hidden.");
    auto const frame = shownFrameOf(connection, top);
    if (!frame) failMissing(fmt::format("There is no window {}; it may have been closed.", window));
    visible(connection, *frame, what);
    return {*frame, {}, top, wholeApplication};
}

ResolvedSource resolveApplication(Connection& connection, ApplicationSource const& source) {
    auto const isSame = [](std::string_view a, std::string_view b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
            return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
        });
    };
    bool isMinimized = false;
    for (auto const& window : windows(connection)) {
        auto const names = windowClass(connection, window.window);
        for (std::string const& name : {window.application, window.bundleID, names.name, names.instance}) {
            if (name.empty() || !isSame(name, source.name)) continue;
            if (!window.isMinimized) return resolveWindow(connection, window.window, true);
            isMinimized = true;
        }
    }
    if (isMinimized) fail(fmt::format("The application “{}” cannot be recorded: it is minimised.", source.name));
    failMissing(fmt::format("No application “{}” has a window to record.", source.name));
}

}

std::vector<DisplayInfo> displays(Connection& connection) {
    auto result = monitors(connection);
    if (result.empty()) result.push_back({"display-1", "screen", rootFrame(connection), true});
    if (std::none_of(result.begin(), result.end(), [](DisplayInfo const& d) { return d.isMain; }))
        result.front().isMain = true;
    return result;
}

std::vector<WindowInfo> windows(Connection& connection) {
    auto stacked = connection.cardinals(connection.root(), "_NET_CLIENT_LIST_STACKING"); // bottom to top
    if (stacked.empty()) stacked = connection.cardinals(connection.root(), "_NET_CLIENT_LIST");
    if (stacked.empty()) stacked = unmanagedWindows(connection);
    std::vector<WindowInfo> result;
    for (auto window = stacked.rbegin(); window != stacked.rend(); ++window) {
        if (isFurniture(connection, *window)) continue;
        if (auto const frame = shownFrameOf(connection, topLevel(connection, *window)))
            result.push_back(describe(connection, *window, *frame));
    }
    return result;
}

int processOf(Connection& connection, xcb_window_t window) {
    auto const pid = connection.cardinals(window, "_NET_WM_PID");
    return pid.empty() ? processOfClient(connection, window) : static_cast<int>(pid[0]);
}

ApplicationIdentity applicationOf(Connection& connection, xcb_window_t window) {
    auto const names = windowClass(connection, window);
    return identifyApplication({.instance = names.instance,
                                .windowClass = names.name,
                                .gtkApplicationID = connection.text(window, "_GTK_APPLICATION_ID"),
                                .program = programOf(connection, window)},
                               windowTitle(connection, window));
}

ResolvedSource resolve(Connection& connection, CaptureSource const& source) {
    if (auto const* const display = std::get_if<DisplaySource>(&source)) return resolveDisplay(connection, *display);
    if (auto const* const window = std::get_if<WindowSource>(&source))
        return resolveWindow(connection, window->id, false);
    if (auto const* const application = std::get_if<ApplicationSource>(&source))
        return resolveApplication(connection, *application);
    return resolveArea(connection, std::get<AreaSource>(source));
}

}
