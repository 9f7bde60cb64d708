#include <TavaroAutomation/Input/Private/FakeInput.h>

#include <TavaroAutomation/Applications/Private/AutomatedDesktop.h>
#include <TavaroAutomation/Errors/AutomationError.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <string_view>
#include <xcb/randr.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

namespace tavaro::x11 {

namespace {

constexpr std::chrono::milliseconds longestSleep{20};
constexpr std::chrono::seconds longestHold{1};
constexpr std::chrono::milliseconds betweenAsking{10};

/// To a time, not for a length: what passes between reading the clock and sleeping adds nothing.
void sleepUntil(InputClock::time_point end) {
    using std::chrono::duration_cast, std::chrono::nanoseconds, std::chrono::seconds;
    auto const since = end.time_since_epoch();
    auto const whole = duration_cast<seconds>(since);
    timespec const due{.tv_sec = whole.count(), .tv_nsec = duration_cast<nanoseconds>(since - whole).count()};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &due, nullptr) == EINTR) {
    }
}

/// An X server inside of a Wayland desktop has no say over that desktop's pointer; its monitors are named after it.
bool isInsideWayland(Connection& connection) {
    if (!connection.extension(xcb_randr_id)) return false;
    auto const resources =
        connection.ask<xcb_randr_get_screen_resources_current, xcb_randr_get_screen_resources_current_reply>(
            connection.root());
    if (!resources) return false;
    auto const* const outputs = xcb_randr_get_screen_resources_current_outputs(resources.get());
    for (int i = 0; i < xcb_randr_get_screen_resources_current_outputs_length(resources.get()); ++i) {
        auto const output = connection.ask<xcb_randr_get_output_info, xcb_randr_get_output_info_reply>(
            outputs[i], resources->config_timestamp);
        if (!output) continue;
        std::string_view const name(reinterpret_cast<char const*>(xcb_randr_get_output_info_name(output.get())),
                                    static_cast<std::size_t>(xcb_randr_get_output_info_name_length(output.get())));
        if (name.starts_with("XWAYLAND")) return true;
    }
    return false;
}

std::uint8_t pressOf(FakeInput::Device device) {
    return device == FakeInput::Device::keyboard ? XCB_KEY_PRESS : XCB_BUTTON_PRESS;
}

std::uint8_t releaseOf(FakeInput::Device device) {
    return device == FakeInput::Device::keyboard ? XCB_KEY_RELEASE : XCB_BUTTON_RELEASE;
}

}

void restUntil(InputClock::time_point end, std::stop_token const& stop) {
    while (true) {
        expectNotStopped(stop);
        auto const now = InputClock::now();
        if (now >= end) return;
        sleepUntil(std::min(end, now + longestSleep));
    }
}

void rest(std::chrono::microseconds length, std::stop_token const& stop) {
    restUntil(InputClock::now() + length, stop);
}

PointerQuery::PointerQuery(Connection& connection)
    : connection_(connection)
    , cookie_(xcb_query_pointer(connection.get(), connection.root())) {}

PointerQuery::~PointerQuery() {
    if (!isTaken_) xcb_discard_reply(connection_.get(), cookie_.sequence);
}

PointerState PointerQuery::answer() {
    isTaken_ = true;
    auto const pointer = own(xcb_query_pointer_reply(connection_.get(), cookie_, nullptr));
    if (!pointer) refuseGone();
    constexpr std::uint16_t buttons = XCB_KEY_BUT_MASK_BUTTON_1 | XCB_KEY_BUT_MASK_BUTTON_2 | XCB_KEY_BUT_MASK_BUTTON_3;
    return {{pointer->root_x, pointer->root_y}, (pointer->mask & buttons) != 0};
}

FakeInput::FakeInput(std::string const& display) : display_(display), connection_(automatedDesktop(display)) {
    if (isInsideWayland(connection_)) refuseWayland();
    auto const version =
        connection_.extension(xcb_test_id)
            ? connection_.ask<xcb_test_get_version, xcb_test_get_version_reply>(std::uint8_t{2}, std::uint16_t{2})
            : nullptr;
    if (!version) refuseDesktop("this X server lacks the XTEST extension.");
    findDevices();
}

FakeInput::~FakeInput() = default;

void FakeInput::findDevices() {
    if (!connection_.extension(xcb_input_id)) return;
    connection_.ask<xcb_input_xi_query_version, xcb_input_xi_query_version_reply>(std::uint16_t{2}, std::uint16_t{2});
    auto const devices = connection_.ask<xcb_input_xi_query_device, xcb_input_xi_query_device_reply>(
        xcb_input_device_id_t{XCB_INPUT_DEVICE_ALL});
    if (!devices) return;
    for (auto it = xcb_input_xi_query_device_infos_iterator(devices.get()); it.rem;
         xcb_input_xi_device_info_next(&it)) {
        std::string_view const name(xcb_input_xi_device_info_name(it.data), it.data->name_len);
        if (!name.starts_with("Virtual core XTEST")) continue;
        (name.ends_with("keyboard") ? keyboard_ : mouse_) = it.data->deviceid;
    }
}

void FakeInput::send(std::uint8_t type, std::uint8_t code, PixelPoint at) {
    xcb_test_fake_input(connection_.get(), type, code, XCB_CURRENT_TIME, connection_.root(),
                        static_cast<std::int16_t>(at.x), static_cast<std::int16_t>(at.y), 0);
}

void FakeInput::tap(Device device, std::uint8_t code, std::vector<std::uint8_t> const& modifiers) {
    expectAlive(connection_);
    for (auto const modifier : modifiers) send(XCB_KEY_PRESS, modifier);
    send(pressOf(device), code);
    send(releaseOf(device), code);
    for (auto held = modifiers.rbegin(); held != modifiers.rend(); ++held) send(XCB_KEY_RELEASE, *held);
    xcb_flush(connection_.get());
}

void FakeInput::touchKeyboard() {
    expectAlive(connection_);
    // No keyboard has a key there, and what is not pressed is not released; the server notes who was asked to.
    send(XCB_KEY_RELEASE, xcb_get_setup(connection_.get())->max_keycode);
    connection_.synchronize();
}

FakeInput::Held::Held(FakeInput& input, Device device, std::uint8_t code)
    : input_(&input)
    , device_(device)
    , code_(code) {
    expectAlive(input.connection_);
    input.send(pressOf(device), code);
    xcb_flush(input.connection_.get());
}

FakeInput::Held::~Held() {
    if (!input_) return;
    input_->send(releaseOf(device_), code_);
    input_->connection_.synchronize();
}

void FakeInput::move(PixelPoint to) { send(XCB_MOTION_NOTIFY, 0, to); }

PixelPoint FakeInput::pointer() { return PointerQuery(connection_).answer().at; }

std::vector<std::uint8_t> FakeInput::pressed(Device device) {
    std::vector<std::uint8_t> result;
    if (deviceID(device) == 0) return result;
    auto const state = connection_.ask<xcb_input_query_device_state, xcb_input_query_device_state_reply>(
        static_cast<std::uint8_t>(deviceID(device)));
    if (!state) return result;
    int const wanted = device == Device::keyboard ? XCB_INPUT_INPUT_CLASS_KEY : XCB_INPUT_INPUT_CLASS_BUTTON;
    for (auto it = xcb_input_query_device_state_classes_iterator(state.get()); it.rem;
         xcb_input_input_state_next(&it)) {
        if (it.data->class_id != wanted) continue;
        auto const* const bits = reinterpret_cast<std::uint8_t const*>(it.data) + 4; // 256, behind class, length, count
        for (int code = 0; code < 256; ++code) {
            if (bits[code / 8] >> (code % 8) & 1) result.push_back(static_cast<std::uint8_t>(code));
        }
    }
    return result;
}

void FakeInput::releaseOrphans(Device device, std::stop_token const& stop) {
    auto const start = InputClock::now();
    for (auto held = pressed(device); !held.empty(); held = pressed(device)) {
        if (InputClock::now() - start > longestHold) {
            for (auto const code : held) send(releaseOf(device), code);
            return connection_.synchronize();
        }
        rest(betweenAsking, stop);
    }
}

}
