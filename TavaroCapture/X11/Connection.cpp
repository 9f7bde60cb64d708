#include <TavaroCapture/X11/Connection.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Errors/Excerpt.h>

#include <fmt/format.h>

#include <mutex>
#include <sys/socket.h>

namespace tavaro::x11 {

namespace {

std::string noServerSentence(std::string const& display) {
    char const* const set = std::getenv("DISPLAY");
    if (display.empty() && (!set || !*set))
        return "There is no display to record: DISPLAY is not set, so no X server is known.";
    return fmt::format("Could not reach the X server at “{}”.", display.empty() ? set : display);
}

/// One at a time: the library that finds the user's authority file keeps its name in one place for all threads.
xcb_connection_t* connected(std::string const& display, int& screen) {
    static std::mutex connecting;
    std::lock_guard const lock(connecting);
    return xcb_connect(display.empty() ? nullptr : display.c_str(), &screen);
}

}

Connection::Connection(std::string const& display) {
    int number = 0;
    connection_ = connected(display, number);
    if (!isAlive()) {
        xcb_disconnect(connection_);
        throw CaptureError(CaptureError::Kind::noDisplay, noServerSentence(display));
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_));
    for (int i = 0; i < number && screens.rem > 1; ++i) xcb_screen_next(&screens);
    screen_ = screens.data;
}

Connection::~Connection() { xcb_disconnect(connection_); }

/// Who waits then reads the end of the connection. Only reading is ended: to write to a closed one is a signal.
void Connection::giveUp() { ::shutdown(xcb_get_file_descriptor(connection_), SHUT_RD); }

void Connection::synchronize() { ask<xcb_get_input_focus, xcb_get_input_focus_reply>(); }

xcb_atom_t Connection::atom(std::string const& name) {
    auto const known = atoms_.find(name);
    if (known != atoms_.end()) return known->second;
    auto const reply =
        ask<xcb_intern_atom, xcb_intern_atom_reply>(false, static_cast<std::uint16_t>(name.size()), name.c_str());
    return atoms_[name] = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::string Connection::atomName(xcb_atom_t atom) {
    if (atom == XCB_ATOM_NONE) return {};
    auto const reply = ask<xcb_get_atom_name, xcb_get_atom_name_reply>(atom);
    if (!reply) return {};
    return {xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

xcb_query_extension_reply_t const* Connection::extension(xcb_extension_t& extension) {
    auto const* const about = xcb_get_extension_data(connection_, &extension);
    return about && about->present ? about : nullptr;
}

std::vector<std::uint32_t> Connection::cardinals(xcb_window_t window, std::string const& property) {
    auto const reply = ask<xcb_get_property, xcb_get_property_reply>(false, window, atom(property),
                                                                     XCB_GET_PROPERTY_TYPE_ANY, 0u, 65536u);
    if (!reply || reply->format != 32) return {};
    auto const* const values = static_cast<std::uint32_t const*>(xcb_get_property_value(reply.get()));
    return {values, values + xcb_get_property_value_length(reply.get()) / 4};
}

std::string Connection::text(xcb_window_t window, std::string const& property) {
    auto const reply = ask<xcb_get_property, xcb_get_property_reply>(false, window, atom(property),
                                                                     XCB_GET_PROPERTY_TYPE_ANY, 0u, 4096u);
    if (!reply || reply->format != 8) return {};
    auto const* const bytes = static_cast<char const*>(xcb_get_property_value(reply.get()));
    return {bytes, static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

WindowClass windowClass(Connection& connection, xcb_window_t window) {
    std::string const both = connection.text(window, "WM_CLASS"); // two texts, each ended by a zero byte
    auto const end = both.find('\0');
    if (end == std::string::npos) return {excerpt(both), excerpt(both)};
    return {excerpt(both.substr(0, end)), excerpt(both.substr(end + 1, both.find('\0', end + 1) - end - 1))};
}

std::string windowTitle(Connection& connection, xcb_window_t window) {
    auto const title = connection.text(window, "_NET_WM_NAME");
    return readableTitle(title.empty() ? connection.text(window, "WM_NAME") : title);
}

std::string readableTitle(std::string_view title) {
    constexpr std::size_t longest = 400; // bytes
    return excerpt(title, longest);
}

xcb_window_t topLevel(Connection& connection, xcb_window_t window) {
    while (window != XCB_NONE) {
        auto const tree = connection.ask<xcb_query_tree, xcb_query_tree_reply>(window);
        if (!tree || tree->parent == tree->root || tree->parent == XCB_NONE) return window;
        window = tree->parent;
    }
    return window;
}

xcb_window_t clientWindow(Connection& connection, xcb_window_t topLevel) {
    std::vector<xcb_window_t> level{topLevel};
    for (int depth = 0; depth < 4 && !level.empty(); ++depth) {
        std::vector<xcb_window_t> below;
        for (xcb_window_t const window : level) {
            if (!connection.cardinals(window, "WM_STATE").empty()) return window;
            auto const tree = connection.ask<xcb_query_tree, xcb_query_tree_reply>(window);
            if (!tree) continue;
            auto const* const children = xcb_query_tree_children(tree.get());
            below.insert(below.end(), children, children + xcb_query_tree_children_length(tree.get()));
        }
        if (below.size() > 64) break; // inside an application by now, not a window manager's frame
        level = std::move(below);
    }
    return topLevel;
}

std::optional<PixelRect> frameOf(Connection& connection, xcb_window_t topLevel) {
    auto const geometry = connection.ask<xcb_get_geometry, xcb_get_geometry_reply>(topLevel);
    if (!geometry) return std::nullopt;
    int const border = geometry->border_width;
    return PixelRect{geometry->x, geometry->y, geometry->width + 2 * border, geometry->height + 2 * border};
}

std::optional<PixelRect> shownFrameOf(Connection& connection, xcb_window_t topLevel) {
    auto frame = frameOf(connection, topLevel);
    auto const margin = connection.cardinals(topLevel, "_GTK_FRAME_EXTENTS"); // left, right, top, bottom
    if (!frame || margin.size() != 4) return frame;
    std::int64_t const width = std::int64_t{frame->width} - margin[0] - margin[1];
    std::int64_t const height = std::int64_t{frame->height} - margin[2] - margin[3];
    if (width < 2 || height < 2) return frame;
    return PixelRect{frame->x + static_cast<int>(margin[0]), frame->y + static_cast<int>(margin[2]),
                     static_cast<int>(width), static_cast<int>(height)};
}

bool isViewable(Connection& connection, xcb_window_t window) {
    auto const attributes = connection.ask<xcb_get_window_attributes, xcb_get_window_attributes_reply>(window);
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

xcb_window_t activeWindow(Connection& connection) {
    auto const active = connection.cardinals(connection.root(), "_NET_ACTIVE_WINDOW");
    if (!active.empty() && active[0] != XCB_NONE) return active[0];
    auto const focus = connection.ask<xcb_get_input_focus, xcb_get_input_focus_reply>();
    if (!focus || focus->focus == connection.root() || focus->focus <= xcb_window_t{XCB_INPUT_FOCUS_FOLLOW_KEYBOARD})
        return XCB_NONE;
    return clientWindow(connection, topLevel(connection, focus->focus));
}

}
