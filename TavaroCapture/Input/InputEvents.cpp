#include <TavaroCapture/Input/Private/InputEvents.h>

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <linux/input-event-codes.h>
#include <poll.h>

namespace tavaro::input {

namespace {

std::optional<MouseButton> buttonOf(std::uint32_t code) {
    switch (code) {
    case BTN_LEFT: return MouseButton::left;
    case BTN_RIGHT: return MouseButton::right;
    // As the pointer of an X server, where every other button that is no wheel's counts as this one.
    case BTN_MIDDLE:
    case BTN_SIDE:
    case BTN_EXTRA:
    case BTN_FORWARD:
    case BTN_BACK:
    case BTN_TASK: return MouseButton::middle;
    default: return std::nullopt;
    }
}

}

InputEvents::InputEvents(std::unique_ptr<EventSource> desktop, Options options)
    : desktop_(std::move(desktop))
    , keys_(options.keys)
    , isAway_(std::move(options.isAway))
    , hasKeyboard_(options.keys != KeyLogging::none && options.devices->keyboards() > 0)
    , devices_(std::move(options.devices))
    , keymap_(std::move(options.keymap)) {
    takeKeymap();
    if (devices_->areNumbersLocked()) keyboard_.lockNumbers();
}

InputEvents::~InputEvents() { stop(); }

void InputEvents::start(EventHandlers handlers) {
    handlers_ = std::move(handlers);
    startedAt_ = mediaClockNow();
    auto passedOn = handlers_;
    passedOn.frontmost = [this](FrontWindow const& window) {
        noteFront(window);
        handlers_.frontmost(window);
    };
    desktop_->start(std::move(passedOn));
    queue_.async([this] { run(); });
}

void InputEvents::noteFront(FrontWindow const& window) {
    std::lock_guard const guard(frontLock_);
    front_ = window.application ? std::optional(window.application->name) : std::nullopt;
}

void InputEvents::stop() {
    isEnding_ = true;
    wake_.ring();
    queue_.sync([] {});
    desktop_->stop();
}

void InputEvents::run() {
    while (!isEnding_) {
        waitForNews();
        takeKeymap();
        devices_->read([this](InputEvent const& event) { note(event); });
        if (keys_ != KeyLogging::none && devices_->keyboards() > 0) hasKeyboard_ = true;
        placeButtons(mediaClockNow() - pointerSeconds);
    }
    placeButtons(std::numeric_limits<double>::infinity());
}

void InputEvents::waitForNews() {
    int patience = -1;
    if (!buttons_.empty()) {
        double const left = buttons_.front().at + pointerSeconds - mediaClockNow();
        patience = static_cast<int>(std::ceil(std::clamp(left, 0.0, pointerSeconds) * 1000));
    }
    pollfd watched[] = {{wake_.descriptor(), POLLIN, 0},
                        {devices_->descriptor(), POLLIN, 0},
                        {keymap_ ? keymap_->descriptor() : -1, POLLIN, 0}};
    poll(watched, std::size(watched), patience);
}

/// The user may change layouts in the take. Without the desktop, the last one counts.
void InputEvents::takeKeymap() {
    if (!keymap_) return;
    bool const isThere = keymap_->listen();
    if (auto const keymap = keymap_->take()) keyboard_.use(*keymap);
    if (!isThere) keymap_.reset();
}

void InputEvents::note(InputEvent const& event) {
    bool const isButton = event.kind == InputEvent::Kind::buttonPress || event.kind == InputEvent::Kind::buttonRelease;
    auto chord = follow(event);
    bool const isKey = chord && keys_ != KeyLogging::none;
    bool const counts = event.at >= startedAt_ && (isButton || isKey) && !isAway_();
    if (counts && isButton && buttonOf(event.code)) buttons_.push_back(event);
    if (counts && isKey) handlers_.key(event.at, std::move(*chord));
}

/// Which keys are held, be they for the log or not.
std::optional<Chord> InputEvents::follow(InputEvent const& event) {
    if (event.kind == InputEvent::Kind::keyPress) return keyboard_.press(event.code);
    if (event.kind == InputEvent::Kind::keyRelease) keyboard_.release(event.code);
    return std::nullopt;
}

/// Presses and releases of that moment and before.
void InputEvents::placeButtons(double dueUntil) {
    while (!buttons_.empty() && buttons_.front().at <= dueUntil) {
        placeButton(buttons_.front());
        buttons_.pop_front();
    }
}

void InputEvents::placeButton(InputEvent const& event) {
    auto const point = desktop_->pointer();
    auto const button = buttonOf(event.code);
    if (!point || !button) return;
    if (event.kind == InputEvent::Kind::buttonRelease) return handlers_.release(event.at, *button, *point);
    EventHandlers::ButtonPress press{.button = *button, .point = *point};
    {
        std::lock_guard const guard(frontLock_);
        press.application = front_;
    }
    handlers_.press(event.at, std::move(press));
}

}
