#pragma once

#include <TavaroCapture/Input/Private/CompositorKeymap.h>
#include <TavaroCapture/Input/Private/InputDevices.h>
#include <TavaroCapture/Input/Private/LayoutKeyboard.h>
#include <TavaroCapture/Sources/KeyLogging.h>
#include <TavaroCapture/Sources/Private/EventSource.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroPlatform/Sockets/Bell.h>

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace tavaro::input {

/// What a desktop tells of itself, with the clicks and keys of the input devices, which it keeps from programs. A click
/// is where the pointer is by then, and on the application that is in front by then, since it brings its window there;
/// where the desktop does not tell where the pointer is, there are none.
class InputEvents final : public EventSource {
public:
    /// A desktop tells where the pointer is with its next picture, which may be a frame late, and one more under way.
    static constexpr double pointerSeconds = 0.04;

    struct Options {
        std::unique_ptr<InputDevices> devices;
        std::unique_ptr<CompositorKeymap> keymap; // none: the machine's usual one
        KeyLogging keys = KeyLogging::all;
        std::function<bool()> isAway = [] { return false; }; // whether others use the devices now
    };
    InputEvents(std::unique_ptr<EventSource> desktop, Options options);
    ~InputEvents() override;

    void start(EventHandlers handlers) override;
    void stop() override;
    bool hasKeyboard() const override { return hasKeyboard_; }
    /// Keys go to programs, too, that desktops tell nothing of.
    bool knowsFront() const override { return false; }
    std::vector<std::string> limits() const override { return desktop_->limits(); }
    std::optional<PixelPoint> pointer() override { return desktop_->pointer(); }

private:
    void run();
    void waitForNews();
    void takeKeymap();
    void note(InputEvent const& event);
    std::optional<Chord> follow(InputEvent const& event);
    void placeButtons(double dueUntil);
    void placeButton(InputEvent const& event);

    void noteFront(FrontWindow const& window);

    std::unique_ptr<EventSource> const desktop_;
    KeyLogging const keys_;
    std::function<bool()> const isAway_;
    EventHandlers handlers_;
    double startedAt_ = 0; // moment of the media clock
    std::atomic<bool> hasKeyboard_ = false;
    std::atomic<bool> isEnding_ = false;
    Bell wake_;
    std::mutex frontLock_;
    std::optional<std::string> front_; // application; guarded by frontLock_

    // The queue's once it runs.
    std::unique_ptr<InputDevices> devices_;
    std::unique_ptr<CompositorKeymap> keymap_;
    LayoutKeyboard keyboard_;
    std::deque<InputEvent> buttons_; // which wait for the pointer

    SerialQueue queue_{"com.tavaro.capture.input"}; // runs one task from `start` to `stop`
};

}
