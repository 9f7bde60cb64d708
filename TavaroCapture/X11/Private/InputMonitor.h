#pragma once

#include <TavaroCapture/Sources/Private/EventSource.h>
#include <TavaroCapture/X11/Connection.h>
#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace tavaro::x11 {

class Keyboard;

/// Listens to the whole desktop: raw presses and keys (also while a program holds a grab), the pointer's shape, the
/// window in front, and prompts for secrets, during which keys are not reported.
class InputMonitor final : public EventSource {
public:
    InputMonitor(std::string const& display, KeyLogging keys);
    ~InputMonitor() override;

    void start(EventHandlers handlers) override;
    void stop() override;
    void giveUp() override;
    bool hasKeyboard() const override;
    std::optional<PixelPoint> pointer() override;

private:
    void run();
    void handle(xcb_generic_event_t const& event);
    void handleRaw(xcb_ge_generic_event_t const& event);
    void handleButton(double at, std::uint32_t detail, bool isPress);
    void handleKey(double at, std::uint32_t keycode);
    void selectEvents();
    void readButtonMapping();
    void reportCursor(xcb_atom_t name);
    xcb_window_t keyboardWindow();
    void reportFrontmost();
    bool asksForSecret(xcb_window_t window);
    void watchForPrompt(xcb_window_t window, bool isMapped);
    void findPrompts();

    Connection connection_;
    Connection pointerConnection_; // for `pointer`, on whichever thread asks
    EventHandlers handlers_;
    std::unique_ptr<Keyboard> keyboard_;
    std::string buttonMapping_; // logical button of each physical one
    std::optional<xcb_window_t> front_;
    bool isFrontSecure_ = false;
    bool followsPointer_ = false; // the keyboard: nobody announces where it goes
    std::vector<xcb_window_t> prompts_;
    FileDescriptor wake_;
    std::atomic<bool> isEnding_ = false;
    SerialQueue queue_{"com.tavaro.capture.events"}; // runs one task from `start` to `stop`
};

}
