#include <TavaroAutomation/Input/Private/UserMotion.h>

#include <TavaroAutomation/Applications/Private/AutomatedDesktop.h>
#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroCapture/X11/Desktop.h>

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <string>
#include <utility>
#include <xcb/xinput.h>

namespace tavaro::x11 {

namespace {

/// They come and go.
std::vector<PixelRect> screensOf(Connection& connection) {
    std::vector<PixelRect> result;
    for (auto const& display : displays(connection)) result.push_back(display.frame);
    return result;
}

}

UserMotion::UserMotion(FakeInput& input) : input_(input) {
    auto& connection = input.connection();
    if (connection.extension(xcb_input_id)) {
        struct {
            xcb_input_event_mask_t head;
            std::uint32_t mask;
        } raw;
        raw.head = {XCB_INPUT_DEVICE_ALL_MASTER, 1};
        raw.mask = XCB_INPUT_XI_EVENT_MASK_RAW_MOTION;
        xcb_input_xi_select_events(connection.get(), connection.root(), 1, &raw.head);
    }
    forget();
}

void UserMotion::forget() {
    screens_ = screensOf(input_.connection());
    before_.reset();
    expected_ = input_.pointer();
    hasForeignEvent();
}

/// The server gets the three at once, so that hardly anybody's motion comes between them.
void UserMotion::move(PixelPoint to) {
    auto& connection = input_.connection();
    target_ = to;
    before_.emplace(connection);
    input_.move(to);
    after_.emplace(connection);
    xcb_flush(connection.get());
}

/// The server moves the pointer itself when the display goes that it was on.
void UserMotion::refuse() {
    expectAlive(input_.connection());
    if (screensOf(input_.connection()) != screens_)
        throw AutomationError(AutomationError::Kind::failed, "Stopped: the displays changed.");
    throw AutomationError(AutomationError::Kind::userMoved, "Stopped: the mouse was moved.");
}

bool UserMotion::isOnAScreen(PixelPoint at) const {
    return std::ranges::any_of(screens_, [&](PixelRect const& screen) {
        return !screen.intersection({at.x, at.y, 1, 1}).isEmpty();
    });
}

void UserMotion::takeAnswers() {
    if (!before_) return;
    auto const before = before_->answer(), after = after_->answer();
    before_.reset();
    // Only where there is no screen does the server choose another place; on one, it is the user who was quicker.
    auto const wasExpected = std::exchange(expected_, isOnAScreen(target_) ? target_ : after.at);
    if (before.at != wasExpected || before.isPressed) refuse();
}

void UserMotion::expectNoneSoFar() {
    takeAnswers();
    if (hasForeignEvent()) refuse();
}

void UserMotion::expectNone() {
    expectNoneSoFar();
    auto const now = PointerQuery(input_.connection()).answer();
    if (now.at != expected_ || now.isPressed) refuse();
}

void UserMotion::expectOnAScreen(PixelPoint at) const {
    if (isOnAScreen(at)) return;
    std::vector<std::string> frames;
    for (auto const& screen : screens_) {
        frames.push_back(fmt::format("x {}–{}, y {}–{}", screen.x, screen.x + screen.width - 1, screen.y,
                                     screen.y + screen.height - 1));
    }
    throw AutomationError(
        AutomationError::Kind::invalidRequest,
        fmt::format("{}, {} is on no display. Displays cover {}.", at.x, at.y, fmt::join(frames, " and ")));
}

/// Takes in all that came so far.
bool UserMotion::hasForeignEvent() {
    auto& connection = input_.connection();
    auto const* const extension = connection.extension(xcb_input_id);
    bool isForeign = false;
    while (auto const event = connection.poll()) {
        auto const& generic = reinterpret_cast<xcb_ge_generic_event_t const&>(*event);
        if (!extension || generic.response_type != XCB_GE_GENERIC || generic.extension != extension->major_opcode ||
            generic.event_type != XCB_INPUT_RAW_MOTION)
            continue;
        auto const source = reinterpret_cast<xcb_input_raw_motion_event_t const&>(*event).sourceid;
        isForeign = isForeign || source != input_.deviceID(FakeInput::Device::mouse);
    }
    return isForeign;
}

}
