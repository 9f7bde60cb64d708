#include <TavaroAutomation/Input/Private/Pointer.h>

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/Private/FakeInput.h>
#include <TavaroAutomation/Input/Private/Glide.h>
#include <TavaroAutomation/Input/Private/KeyboardLayout.h>
#include <TavaroAutomation/Input/Private/UserMotion.h>
#include <TavaroAutomation/Input/Private/Wheel.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace tavaro {

using namespace std::chrono_literals;
using x11::FakeInput;
using x11::InputClock;

namespace {

constexpr double stepsPerSecond = 120;
constexpr auto pressTime = 70ms;     // a finger's
constexpr auto betweenClicks = 90ms; // well within every program's time for a double click
constexpr double correctionSeconds = 0.18;
constexpr int mostCorrections = 3;
constexpr int margin = 4; // inside of a menu, where it is entered

PixelPoint pixel(UIPoint const& point) {
    // On the way from one screen to another there may be none; the server keeps the pointer on them.
    auto const clamped = [](double value) {
        return static_cast<int>(std::lround(std::clamp(value, -32768.0, 32767.0)));
    };
    return {clamped(point.x), clamped(point.y)};
}

/// Where to enter the menu or list that the target is in, from outside of it. On the straight way there the pointer
/// could pass over the title of another menu, which would open instead.
std::optional<UIPoint> entryOfPopup(x11::Connection& connection, PixelPoint from, PixelPoint to) {
    auto const tree = connection.ask<xcb_query_tree, xcb_query_tree_reply>(connection.root());
    auto const* const bottom = tree ? xcb_query_tree_children(tree.get()) : nullptr;
    for (int i = tree ? xcb_query_tree_children_length(tree.get()) - 1 : -1; i >= 0; --i) {
        auto const frame = x11::frameOf(connection, bottom[i]);
        if (!frame || frame->intersection({to.x, to.y, 1, 1}).isEmpty() || !x11::isViewable(connection, bottom[i]))
            continue;
        auto const about = connection.ask<xcb_get_window_attributes, xcb_get_window_attributes_reply>(bottom[i]);
        bool const isInside = !frame->intersection({from.x, from.y, 1, 1}).isEmpty();
        if (!about || !about->override_redirect || isInside) return std::nullopt;
        auto const nearest = [](int value, int begin, int length) {
            return static_cast<double>(std::clamp(value, begin + std::min(margin, length / 2),
                                                  begin + std::max(length - 1 - margin, length / 2)));
        };
        return UIPoint{nearest(from.x, frame->x, frame->width), nearest(from.y, frame->y, frame->height)};
    }
    return std::nullopt;
}

/// The desktop's own is nothing.
xcb_window_t windowUnderPointer(x11::Connection& connection) {
    auto const pointer = connection.ask<xcb_query_pointer, xcb_query_pointer_reply>(connection.root());
    return pointer ? pointer->child : XCB_NONE;
}

/// What is behind a window is not meant by a second click on it.
void expectStillThere(x11::Connection& connection, xcb_window_t window, int clicks, int count) {
    if (window == XCB_NONE || x11::isViewable(connection, window)) return;
    throw AutomationError(
        AutomationError::Kind::notShown,
        fmt::format("The window there went after {} of {} clicks, so no more were made.", clicks, count));
}

/// The physical button that the server takes for that one.
std::uint8_t physical(x11::Connection& connection, UIMouseButton button) {
    std::uint8_t const logical = button == UIMouseButton::left ? 1 : 3;
    auto const mapping = connection.ask<xcb_get_pointer_mapping, xcb_get_pointer_mapping_reply>();
    if (!mapping) return logical;
    auto const* const map = xcb_get_pointer_mapping_map(mapping.get());
    auto const* const end = map + xcb_get_pointer_mapping_map_length(mapping.get());
    auto const* const found = std::find(map, end, logical);
    return found == end ? logical : static_cast<std::uint8_t>(found - map + 1);
}

}

struct Pointer::State {
    FakeInput input;
    x11::KeyboardWatch keyboard;
    x11::UserMotion user;
    // What is seen of a hand's motion is its timing. Nothing else is done on this thread.
    SerialQueue hand{"com.tavaro.automation.pointer", SerialQueue::Urgency::prompt};

    explicit State(std::string const& display) : input(display), keyboard(input.connection()), user(input) {}

    UIPoint position() {
        auto const at = input.pointer();
        return {static_cast<double>(at.x), static_cast<double>(at.y)};
    }
    void begin(std::stop_token const& stop) {
        // They would make a drag of the way, or another click of the click.
        input.releaseOrphans(FakeInput::Device::mouse, stop);
        input.releaseOrphans(FakeInput::Device::keyboard, stop);
        keyboard.whenFree(stop);
        user.forget();
    }
    void follow(Glide const& path, double seconds, std::stop_token const& stop);
    void press(std::uint8_t button, int count, std::stop_token const& stop);
    void glideTo(UIPoint const& to, double seconds, std::stop_token const& stop);
};

void Pointer::State::follow(Glide const& path, double seconds, std::stop_token const& stop) {
    using Seconds = std::chrono::duration<double>;
    auto const start = InputClock::now();
    int const steps = std::max(1, static_cast<int>(seconds * stepsPerSecond));
    for (int step = 1; step <= steps; ++step) {
        auto const due = start + std::chrono::duration_cast<InputClock::duration>(Seconds(seconds * step / steps));
        x11::restUntil(due, stop);
        // On a busy machine steps whose time is over are left out: the hand does not hurry to catch up in one jump.
        double const elapsed = Seconds(InputClock::now() - start).count();
        if (seconds > 0) step = std::clamp(static_cast<int>(elapsed / seconds * steps), step, steps);
        user.expectNoneSoFar();
        user.move(pixel(path.at(static_cast<double>(step) / steps)));
    }
    user.expectNone();
}

void Pointer::State::press(std::uint8_t button, int count, std::stop_token const& stop) {
    auto const window = windowUnderPointer(input.connection());
    for (int i = 0; i < count; ++i) {
        if (i > 0) x11::rest(betweenClicks, stop);
        keyboard.whenFree(stop);
        expectNotStopped(stop);
        user.expectNone();
        if (i > 0) expectStillThere(input.connection(), window, i, count);
        FakeInput::Held const held(input, FakeInput::Device::mouse, button);
        x11::rest(pressTime, stop);
    }
    user.expectNoneSoFar(); // it became a drag
}

void Pointer::State::glideTo(UIPoint const& to, double seconds, std::stop_token const& stop) {
    auto const from = position();
    Glide const path(from, to, entryOfPopup(input.connection(), pixel(from), pixel(to)));
    hand.sync([&] { follow(path, seconds, stop); });
}

Pointer::Pointer(std::string const& display) : state_(std::make_unique<State>(display)) {}
Pointer::~Pointer() = default;

UIPoint Pointer::position() { return state_->position(); }

void Pointer::glide(UIPoint const& to, double seconds, std::stop_token const& stop, PlaceOfTarget const& place) {
    state_->begin(stop);
    state_->user.expectOnAScreen(pixel(to));
    state_->glideTo(to, seconds, stop);
    for (int i = 0; i < mostCorrections && place; ++i) {
        auto const now = place();
        state_->user.expectNone();
        if (!now || pixel(*now) == pixel(position())) return;
        state_->glideTo(*now, correctionSeconds, stop);
    }
}

void Pointer::click(UIMouseButton button, int count, std::stop_token const& stop) {
    auto& connection = state_->input.connection();
    auto const code = physical(connection, button);
    state_->hand.sync([&] { state_->press(code, count, stop); });
}

Pointer::Scrolled Pointer::scroll(Distance const& distance, std::stop_token const& stop, PlaceOfTarget const& place) {
    state_->begin(stop);
    x11::Wheel wheel({state_->input, state_->user, state_->keyboard, stop, place});
    auto const down = wheel.turn(x11::WheelAxis::vertical, distance.down);
    auto const right = wheel.turn(x11::WheelAxis::horizontal, distance.right);
    return {.went = {down.pixels, right.pixels},
            .isAtEnd = down.isAtEnd || right.isAtEnd,
            .isSeen = down.isSeen && right.isSeen};
}

}
