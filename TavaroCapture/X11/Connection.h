#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include <xcb/xcb.h>

/// The handles of XCB and the few questions asked of any window. For what works with an X11 desktop only.
namespace tavaro::x11 {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template<class R> using Reply = std::unique_ptr<R, Free>;
using Event = Reply<xcb_generic_event_t>;

template<class R> Reply<R> own(R* reply) { return Reply<R>(reply); }

/// A connection to one X server. One thread a connection: a reader that waits for its own replies is never behind
/// another's large picture.
class Connection {
public:
    /// `display` as in `$DISPLAY`, which an empty one means. Throws `CaptureError` when no server answers.
    explicit Connection(std::string const& display);
    ~Connection();
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    xcb_connection_t* get() const { return connection_; }
    xcb_window_t root() const { return screen_->root; }
    xcb_screen_t const& screen() const { return *screen_; }
    bool isAlive() const { return xcb_connection_has_error(connection_) == 0; }
    /// Any thread. What waits for the server, and all that is asked from here on, fails as if it had ended.
    void giveUp();
    /// Waits until the server has done everything asked so far.
    void synchronize();

    /// Sends a request and waits; nothing when the server refused it or is gone.
    /// `ask<xcb_get_geometry, xcb_get_geometry_reply>(window)`
    template<auto request, auto reply, class... Arguments> auto ask(Arguments... arguments) {
        return own(reply(connection_, request(connection_, arguments...), nullptr));
    }
    Event poll() { return own(xcb_poll_for_event(connection_)); }

    /// Identifier of a name, asked once.
    xcb_atom_t atom(std::string const& name);
    std::string atomName(xcb_atom_t atom);
    /// Whether the server has the extension; its events start at `firstEvent`, its opcode is `opcode`.
    xcb_query_extension_reply_t const* extension(xcb_extension_t& extension);

    std::vector<std::uint32_t> cardinals(xcb_window_t window, std::string const& property);
    std::string text(xcb_window_t window, std::string const& property);

private:
    xcb_connection_t* connection_ = nullptr;
    xcb_screen_t* screen_ = nullptr;
    std::map<std::string, xcb_atom_t> atoms_;
};

struct WindowClass {
    std::string instance; // "mousepad"
    std::string name;     // "Mousepad"
};
/// Whoever made a window chose its names. These are on one line, and not too long for a sentence.
WindowClass windowClass(Connection& connection, xcb_window_t window);
std::string windowTitle(Connection& connection, xcb_window_t window);
/// A title as `windowTitle` has it.
std::string readableTitle(std::string_view title);

/// The window's ancestor (or itself) whose parent is the root: the window manager's frame where there is one.
xcb_window_t topLevel(Connection& connection, xcb_window_t window);
/// The client's window inside a top-level one: the nearest with a WM_STATE, else the top-level window itself.
xcb_window_t clientWindow(Connection& connection, xcb_window_t topLevel);
/// Where a child of the root lies on the desktop, with its border; none when it is gone.
std::optional<PixelRect> frameOf(Connection& connection, xcb_window_t topLevel);
/// What of a top-level window people see as the window: its frame less the margin that programs which draw their own
/// frame keep for its shadow.
std::optional<PixelRect> shownFrameOf(Connection& connection, xcb_window_t topLevel);
bool isViewable(Connection& connection, xcb_window_t window);
/// The window in front: the window manager's word, else the top-level window that has the keyboard.
xcb_window_t activeWindow(Connection& connection);

}
