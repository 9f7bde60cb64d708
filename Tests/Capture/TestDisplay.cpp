#include "TestDisplay.h"

#include <cstdlib>
#include <fcntl.h>
#include <signal.h>
#include <stdexcept>
#include <sys/uio.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/xcbext.h>
#include <xcb/xfixes.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon.h>

// The generated header names a field `explicit`, a word of this language.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

namespace tavaro {

TestDisplay::TestDisplay(int width, int height) {
    std::string const screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
    unsetenv("WAYLAND_DISPLAY"); // of who runs the tests: they are not to be asked
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
    process_ = fork();
    if (process_ == 0) {
        close(ends[0]);
        int const quiet = open("/dev/null", O_WRONLY);
        dup2(quiet, 2);
        execlp("Xvfb", "Xvfb", "-displayfd", std::to_string(ends[1]).c_str(), "-screen", "0", screen.c_str(),
               "-nolisten", "tcp", "-noreset", nullptr);
        _exit(127);
    }
    close(ends[1]);
    std::string number;
    for (char c; read(ends[0], &c, 1) == 1 && c != '\n';) number += c; // written once the server takes connections
    close(ends[0]);
    if (number.empty()) throw std::runtime_error("Xvfb did not start");
    name_ = ":" + number;
}

TestDisplay::~TestDisplay() { kill(); }

void TestDisplay::kill() {
    if (process_ <= 0) return;
    // It takes its lock and its socket away itself. Removed by somebody else, they could already be another server's.
    ::kill(process_, SIGTERM);
    thaw();
    waitpid(process_, nullptr, 0);
    process_ = -1;
}

void TestDisplay::freeze() const { ::kill(process_, SIGSTOP); }
void TestDisplay::thaw() const { ::kill(process_, SIGCONT); }

bool TestDisplay::isInstalled() { return std::system("command -v Xvfb >/dev/null 2>&1") == 0; }

std::uint32_t TestClient::makeWindow(WindowOptions const& options) {
    auto* const c = connection_.get();
    std::uint32_t const window = xcb_generate_id(c);
    std::uint32_t const values[] = {options.color, options.isPopup};
    auto const& frame = options.frame;
    xcb_create_window(c, XCB_COPY_FROM_PARENT, window, connection_.root(), static_cast<std::int16_t>(frame.x),
                      static_cast<std::int16_t>(frame.y), static_cast<std::uint16_t>(frame.width),
                      static_cast<std::uint16_t>(frame.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    std::string const classes = options.windowClass + '\0' + options.windowClass + '\0';
    auto const setText = [&](std::string const& property, std::string const& text) {
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, connection_.atom(property), XCB_ATOM_STRING, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
    };
    setText("WM_CLASS", classes);
    setText("WM_NAME", options.title);
    if (options.isMapped) xcb_map_window(c, window);
    connection_.synchronize();
    return window;
}

void TestClient::fill(std::uint32_t window, PixelRect const& rect, std::uint32_t color) {
    auto* const c = connection_.get();
    std::uint32_t const context = xcb_generate_id(c);
    xcb_create_gc(c, context, window, XCB_GC_FOREGROUND, &color);
    xcb_rectangle_t const area{static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(rect.y),
                               static_cast<std::uint16_t>(rect.width), static_cast<std::uint16_t>(rect.height)};
    xcb_poly_fill_rectangle(c, window, context, 1, &area);
    xcb_free_gc(c, context);
    connection_.synchronize();
}

void TestClient::move(std::uint32_t window, PixelRect const& frame) {
    std::uint32_t const values[] = {static_cast<std::uint32_t>(frame.x), static_cast<std::uint32_t>(frame.y),
                                    static_cast<std::uint32_t>(frame.width), static_cast<std::uint32_t>(frame.height)};
    xcb_configure_window(connection_.get(), window,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         values);
    connection_.synchronize();
}

void TestClient::destroy(std::uint32_t window) {
    xcb_destroy_window(connection_.get(), window);
    connection_.synchronize();
}

void TestClient::setActive(std::uint32_t window) {
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, connection_.root(),
                        connection_.atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW, 32, 1, &window);
    connection_.synchronize();
}

void TestClient::resizeDesktop(int width, int height) {
    auto const resources =
        connection_.ask<xcb_randr_get_screen_resources, xcb_randr_get_screen_resources_reply>(connection_.root());
    auto const crtc = xcb_randr_get_screen_resources_crtcs(resources.get())[0];
    connection_.ask<xcb_randr_set_crtc_config, xcb_randr_set_crtc_config_reply>(
        crtc, xcb_timestamp_t{XCB_CURRENT_TIME}, resources->config_timestamp, std::int16_t{0}, std::int16_t{0},
        xcb_randr_mode_t{XCB_NONE}, std::uint16_t{XCB_RANDR_ROTATION_ROTATE_0}, 0u,
        static_cast<xcb_randr_output_t const*>(nullptr));
    xcb_randr_set_screen_size(connection_.get(), connection_.root(), static_cast<std::uint16_t>(width),
                              static_cast<std::uint16_t>(height), 300, 200);
    connection_.synchronize();
}

namespace {

/// `xcb_randr_set_monitor` cannot send a monitor with outputs.
void setMonitor(x11::Connection& connection, xcb_randr_monitor_info_t const& info, xcb_randr_output_t output) {
    struct {
        xcb_randr_set_monitor_request_t head;
        xcb_randr_monitor_info_t info;
        xcb_randr_output_t output;
    } request{.head = {.window = connection.root()}, .info = info, .output = output};
    std::size_t const length = sizeof request - (info.nOutput == 0 ? sizeof output : 0);
    xcb_protocol_request_t const kind{.count = 1, .ext = &xcb_randr_id, .opcode = XCB_RANDR_SET_MONITOR, .isvoid = 1};
    iovec parts[4] = {{}, {}, {&request, length}, {}}; // XCB uses the two before
    xcb_send_request(connection.get(), 0, parts + 2, &kind);
}

}

void TestClient::setDisplays(std::map<std::string, PixelRect> const& displays) {
    auto* const c = connection_.get();
    connection_.ask<xcb_randr_query_version, xcb_randr_query_version_reply>(1u, 5u);
    auto const resources =
        connection_.ask<xcb_randr_get_screen_resources, xcb_randr_get_screen_resources_reply>(connection_.root());
    auto const isKept = [&](auto const& display) {
        auto const found = displays.find(display.first);
        return found != displays.end() && found->second == display.second;
    };
    for (auto const& each : displays_)
        if (!isKept(each)) xcb_randr_delete_monitor(c, connection_.root(), connection_.atom(each.first));
    std::erase_if(displays_, std::not_fn(isKept));
    for (auto const& [name, frame] : displays) {
        if (displays_.contains(name)) continue;
        bool const isFirst = name == displays.begin()->first; // it takes the place of the server's only output
        auto const output = xcb_randr_get_screen_resources_outputs(resources.get())[0];
        setMonitor(connection_,
                   {.name = connection_.atom(name),
                    .primary = isFirst,
                    .nOutput = static_cast<std::uint16_t>(isFirst ? 1 : 0),
                    .x = static_cast<std::int16_t>(frame.x),
                    .y = static_cast<std::int16_t>(frame.y),
                    .width = static_cast<std::uint16_t>(frame.width),
                    .height = static_cast<std::uint16_t>(frame.height)},
                   output);
    }
    displays_ = displays;
    connection_.synchronize();
}

void TestClient::setCursor(std::uint32_t window, std::string const& name) {
    auto* const c = connection_.get();
    connection_.ask<xcb_xfixes_query_version, xcb_xfixes_query_version_reply>(4u, 0u);
    std::uint32_t const font = xcb_generate_id(c);
    xcb_open_font(c, font, 6, "cursor");
    std::uint32_t const cursor = xcb_generate_id(c);
    xcb_create_glyph_cursor(c, cursor, font, font, 152, 153, 0, 0, 0, 65535, 65535, 65535);
    xcb_xfixes_set_cursor_name(c, cursor, static_cast<std::uint16_t>(name.size()), name.c_str());
    xcb_change_window_attributes(c, window, XCB_CW_CURSOR, &cursor);
    connection_.synchronize();
}

void TestClient::movePointer(int x, int y) {
    xcb_test_fake_input(connection_.get(), XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, connection_.root(),
                        static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
    connection_.synchronize();
}

void TestClient::button(int number, bool isPressed) {
    xcb_test_fake_input(connection_.get(), isPressed ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE,
                        static_cast<std::uint8_t>(number), XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    connection_.synchronize();
}

std::uint8_t TestClient::codeOf(std::string const& symbol) {
    auto const wanted = xkb_keysym_from_name(symbol.c_str(), XKB_KEYSYM_NO_FLAGS);
    auto const* const setup = xcb_get_setup(connection_.get());
    auto const count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    auto const mapping =
        connection_.ask<xcb_get_keyboard_mapping, xcb_get_keyboard_mapping_reply>(setup->min_keycode, count);
    auto const* const symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
    for (int i = 0; i < count; ++i) {
        if (symbols[i * mapping->keysyms_per_keycode] == wanted)
            return static_cast<std::uint8_t>(setup->min_keycode + i);
    }
    return 0;
}

void TestClient::key(std::string const& symbol, bool isPressed) {
    auto const code = codeOf(symbol);
    ASSERT_NE(code, 0) << "no key makes " << symbol;
    xcb_test_fake_input(connection_.get(), isPressed ? XCB_KEY_PRESS : XCB_KEY_RELEASE, code, XCB_CURRENT_TIME,
                        XCB_NONE, 0, 0, 0);
    connection_.synchronize();
}

void TestClient::useLayout(int number) {
    connection_.ask<xcb_xkb_use_extension, xcb_xkb_use_extension_reply>(std::uint16_t{1}, std::uint16_t{0});
    xcb_xkb_latch_lock_state(connection_.get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, true, static_cast<std::uint8_t>(number),
                             0, false, 0);
    connection_.synchronize();
}

bool eventually(std::function<bool()> const& isSo) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!isSo()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

}
