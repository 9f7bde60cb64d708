#include <TavaroCapture/X11/Private/InputMonitor.h>

#include <TavaroCapture/Events/Private/CursorNames.h>
#include <TavaroCapture/Events/Private/SecurePrompts.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/Sources/Private/Patience.h>
#include <TavaroCapture/X11/Desktop.h>
#include <TavaroCapture/X11/Private/Keyboard.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

namespace tavaro::x11 {

namespace {

/// How often the front window is looked up where no window manager announces it.
constexpr int focusPollMilliseconds = 250;

/// When an event with that server time (milliseconds, wrapping) happened. Servers of this machine count on the media
/// clock; the stamp of one that does not makes no sense here, and the event counts as happening on its arrival.
double happenedAt(xcb_timestamp_t time) {
    double const now = mediaClockNow();
    auto const milliseconds = static_cast<std::uint64_t>(now * 1000);
    std::uint32_t const age = static_cast<std::uint32_t>(milliseconds) - time;
    return age < 1000 ? static_cast<double>(milliseconds - age) / 1000 : now;
}

bool hasRawInput(Connection& connection) {
    if (!connection.extension(xcb_input_id)) return false;
    // From 2.1 on, raw events also arrive while another program grabs the device.
    auto const version = connection.ask<xcb_input_xi_query_version, xcb_input_xi_query_version_reply>(std::uint16_t{2},
                                                                                                      std::uint16_t{2});
    return version && (version->major_version > 2 || (version->major_version == 2 && version->minor_version >= 1));
}

}

InputMonitor::InputMonitor(std::string const& display, KeyLogging keys)
    : connection_(display)
    , pointerConnection_(display) {
    if (!hasRawInput(connection_))
        throw CaptureError(CaptureError::Kind::unsupported,
                           "Clicks and keys cannot be recorded: this X server lacks XInput 2.1.");
    connection_.ask<xcb_xfixes_query_version, xcb_xfixes_query_version_reply>(4u, 0u);
    if (keys != KeyLogging::none) keyboard_ = Keyboard::open(connection_);
    readButtonMapping();
    selectEvents();
    findPrompts();
    wake_ = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
}

InputMonitor::~InputMonitor() { stop(); }

void InputMonitor::stop() {
    isEnding_ = true;
    eventfd_write(wake_.get(), 1);
    if (!queue_.settles(answerPatience)) giveUp();
    queue_.sync([] {});
}

void InputMonitor::giveUp() {
    connection_.giveUp();
    pointerConnection_.giveUp();
}

void InputMonitor::start(EventHandlers handlers) {
    handlers_ = std::move(handlers);
    auto const cursor =
        connection_.ask<xcb_xfixes_get_cursor_image_and_name, xcb_xfixes_get_cursor_image_and_name_reply>();
    if (cursor) reportCursor(cursor->cursor_atom);
    reportFrontmost();
    queue_.async([this] { run(); });
}

bool InputMonitor::hasKeyboard() const { return keyboard_ != nullptr; }

std::optional<PixelPoint> InputMonitor::pointer() {
    auto const pointer = pointerConnection_.ask<xcb_query_pointer, xcb_query_pointer_reply>(pointerConnection_.root());
    if (!pointer) return std::nullopt;
    return PixelPoint{pointer->root_x, pointer->root_y};
}

void InputMonitor::selectEvents() {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } raw;
    // Master devices only: their events stand for all of their slaves', once.
    raw.head = {XCB_INPUT_DEVICE_ALL_MASTER, 1};
    raw.mask = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE;
    if (keyboard_) raw.mask |= XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS;
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &raw.head);
    xcb_xfixes_select_cursor_input(connection_.get(), connection_.root(), XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    std::uint32_t const mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_.get(), connection_.root(), XCB_CW_EVENT_MASK, &mask);
    connection_.synchronize();
}

/// Left-handed people swap buttons; raw events tell the physical ones.
void InputMonitor::readButtonMapping() {
    auto const mapping = connection_.ask<xcb_get_pointer_mapping, xcb_get_pointer_mapping_reply>();
    if (!mapping) return;
    auto const* const map = reinterpret_cast<char const*>(xcb_get_pointer_mapping_map(mapping.get()));
    buttonMapping_.assign(map, static_cast<std::size_t>(xcb_get_pointer_mapping_map_length(mapping.get())));
}

void InputMonitor::run() {
    pollfd watched[] = {{xcb_get_file_descriptor(connection_.get()), POLLIN, 0}, {wake_.get(), POLLIN, 0}};
    while (!isEnding_ && connection_.isAlive()) {
        while (auto const event = connection_.poll()) handle(*event);
        xcb_flush(connection_.get());
        // A reply waited for above may have brought events along that poll() would not announce.
        if (auto const queued = own(xcb_poll_for_queued_event(connection_.get()))) {
            handle(*queued);
            continue;
        }
        if (poll(watched, 2, focusPollMilliseconds) == 0) reportFrontmost();
    }
}

void InputMonitor::handle(xcb_generic_event_t const& event) {
    if (keyboard_ && keyboard_->handle(event)) return;
    auto const type = event.response_type & 0x7f;
    auto const* const fixes = connection_.extension(xcb_xfixes_id);
    if (fixes && type == fixes->first_event + XCB_XFIXES_CURSOR_NOTIFY)
        return reportCursor(reinterpret_cast<xcb_xfixes_cursor_notify_event_t const&>(event).name);
    switch (type) {
    case XCB_GE_GENERIC: return handleRaw(reinterpret_cast<xcb_ge_generic_event_t const&>(event));
    case XCB_MAPPING_NOTIFY: return readButtonMapping();
    case XCB_MAP_NOTIFY: return watchForPrompt(reinterpret_cast<xcb_map_notify_event_t const&>(event).window, true);
    case XCB_UNMAP_NOTIFY:
        return watchForPrompt(reinterpret_cast<xcb_unmap_notify_event_t const&>(event).window, false);
    case XCB_PROPERTY_NOTIFY:
        if (reinterpret_cast<xcb_property_notify_event_t const&>(event).atom == connection_.atom("_NET_ACTIVE_WINDOW"))
            reportFrontmost();
        return;
    default: return;
    }
}

void InputMonitor::handleRaw(xcb_ge_generic_event_t const& event) {
    auto const* const input = connection_.extension(xcb_input_id);
    if (!input || event.extension != input->major_opcode) return;
    auto const& raw = reinterpret_cast<xcb_input_raw_button_press_event_t const&>(event);
    double const at = happenedAt(raw.time);
    if (event.event_type == XCB_INPUT_RAW_BUTTON_PRESS) handleButton(at, raw.detail, true);
    if (event.event_type == XCB_INPUT_RAW_BUTTON_RELEASE) handleButton(at, raw.detail, false);
    if (event.event_type == XCB_INPUT_RAW_KEY_PRESS) handleKey(at, raw.detail);
}

void InputMonitor::handleButton(double at, std::uint32_t detail, bool isPress) {
    if (detail >= 1 && detail <= buttonMapping_.size()) detail = static_cast<unsigned char>(buttonMapping_[detail - 1]);
    if (detail == 0 || (detail >= 4 && detail <= 7)) return; // 4 to 7 are the wheel's
    auto const button = detail == 1 ? MouseButton::left : detail == 3 ? MouseButton::right : MouseButton::middle;
    auto const pointer = connection_.ask<xcb_query_pointer, xcb_query_pointer_reply>(connection_.root());
    if (!pointer) return;
    PixelPoint const point{pointer->root_x, pointer->root_y};
    if (!isPress) return handlers_.release(at, button, point);
    EventHandlers::ButtonPress press{button, point, std::nullopt, std::nullopt};
    if (pointer->child != XCB_NONE) {
        press.windowFrame = shownFrameOf(connection_, pointer->child);
        std::string name = applicationOf(connection_, clientWindow(connection_, pointer->child)).name;
        if (!name.empty()) press.application = std::move(name);
    }
    handlers_.press(at, std::move(press));
}

void InputMonitor::handleKey(double at, std::uint32_t keycode) {
    if (!keyboard_) return;
    if (followsPointer_) reportFrontmost();
    if (isFrontSecure_ || !prompts_.empty()) return;
    if (auto chord = keyboard_->chord(keycode)) handlers_.key(at, std::move(*chord));
}

void InputMonitor::reportCursor(xcb_atom_t name) { handlers_.cursor(cursorKind(connection_.atomName(name))); }

/// Without a window manager the keyboard usually is in the window under the pointer.
xcb_window_t InputMonitor::keyboardWindow() {
    xcb_window_t const active = activeWindow(connection_);
    auto const focus = active == XCB_NONE ? connection_.ask<xcb_get_input_focus, xcb_get_input_focus_reply>() : nullptr;
    followsPointer_ = focus && (focus->focus == XCB_INPUT_FOCUS_POINTER_ROOT || focus->focus == connection_.root());
    if (!followsPointer_) return active;
    auto const pointer = connection_.ask<xcb_query_pointer, xcb_query_pointer_reply>(connection_.root());
    return pointer && pointer->child != XCB_NONE ? clientWindow(connection_, pointer->child) : xcb_window_t{XCB_NONE};
}

void InputMonitor::reportFrontmost() {
    xcb_window_t const active = keyboardWindow();
    if (active == front_) return;
    front_ = active;
    if (active == XCB_NONE) {
        isFrontSecure_ = false;
        return handlers_.frontmost({});
    }
    isFrontSecure_ = asksForSecret(active);
    FrontWindow window{.process = processOf(connection_, active)};
    auto identity = applicationOf(connection_, active);
    if (!identity.name.empty()) window.application = std::move(identity);
    handlers_.frontmost(std::move(window));
}

bool InputMonitor::asksForSecret(xcb_window_t window) {
    auto const names = windowClass(connection_, window);
    return isSecurePrompt(
        {.instance = names.instance, .windowClass = names.name, .command = commandOf(processOf(connection_, window))});
}

void InputMonitor::watchForPrompt(xcb_window_t window, bool isMapped) {
    if (!isMapped) {
        std::erase(prompts_, window);
        return;
    }
    if (asksForSecret(clientWindow(connection_, window))) prompts_.push_back(window);
}

void InputMonitor::findPrompts() {
    auto const tree = connection_.ask<xcb_query_tree, xcb_query_tree_reply>(connection_.root());
    if (!tree) return;
    auto const* const children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        if (isViewable(connection_, children[i])) watchForPrompt(children[i], true);
    }
}

}
