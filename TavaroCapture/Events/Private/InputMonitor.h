#pragma once

#include <TavaroCapture/Events/Private/EventLog.h>
#include <TavaroCapture/X11/Private/Connection.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace tavaro::x11 {

class Keyboard;

/// What the monitor reports, on its own thread, as it happens. `at` is the moment on the media clock.
struct InputHandlers {
    struct ButtonPress {
        MouseButton button;
        PixelPoint point;
        std::optional<std::string> application; // of the window under the pointer
        std::optional<PixelRect> windowFrame;   // on the desktop
    };
    std::function<void(double at, ButtonPress)> press;
    std::function<void(double at, MouseButton, PixelPoint)> release;
    std::function<void(double at, Chord)> key;
    std::function<void(CursorKind)> cursor;
    std::function<void(std::optional<ApplicationIdentity>)> frontmost;
};

/// Listens to the whole desktop: raw presses and keys (also while a program holds a grab), the pointer's shape, the
/// window in front, and prompts for secrets, during which keys are not reported.
class InputMonitor {
public:
    InputMonitor(std::string const& display, bool wantsKeys, InputHandlers handlers);
    ~InputMonitor();

    void start();
    /// No handler runs after it.
    void stop();
    /// Whether the server lets keys be read.
    bool hasKeyboard() const;

private:
    void run();
    void handle(xcb_generic_event_t const& event);
    void handleRaw(xcb_ge_generic_event_t const& event);
    void handleButton(double at, std::uint32_t detail, bool isPress);
    void handleKey(double at, std::uint32_t keycode);
    void selectEvents();
    void readButtonMapping();
    void reportCursor(xcb_atom_t name);
    void reportFrontmost();
    void watchForPrompt(xcb_window_t window, bool isMapped);
    void findPrompts();

    Connection connection_;
    InputHandlers const handlers_;
    std::unique_ptr<Keyboard> keyboard_;
    std::string buttonMapping_; // logical button of each physical one
    std::optional<xcb_window_t> front_;
    bool isFrontSecure_ = false;
    std::vector<xcb_window_t> prompts_;
    int wake_ = -1;
    std::thread thread_;
    std::atomic<bool> isEnding_ = false;
};

}
