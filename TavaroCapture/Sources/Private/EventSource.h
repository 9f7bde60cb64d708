#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCapture/Sources/Chord.h>
#include <TavaroCapture/Sources/DesktopEntries.h>
#include <TavaroCapture/Sources/KeyLogging.h>
#include <TavaroCore/Recording/RecordingMetadata.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// The window that has the keyboard.
struct FrontWindow {
    std::optional<ApplicationIdentity> application; // none where there is no window, or nobody says whose it is
    int process = 0;                                // 0: unknown
    bool asksForSecret = false;                     // it is known as a prompt for secrets
    bool operator==(FrontWindow const&) const = default;
};

/// What the user does on the desktop, reported on the source's own thread as it happens. `at` is the moment on the
/// media clock.
struct EventHandlers {
    struct ButtonPress {
        MouseButton button = MouseButton::left;
        PixelPoint point;
        std::optional<std::string> application; // of the window under the pointer
        std::optional<PixelRect> windowFrame;   // on the desktop
    };
    std::function<void(double at, ButtonPress)> press;
    std::function<void(double at, MouseButton, PixelPoint)> release;
    std::function<void(double at, Chord)>
        key; // never one that is typed into a prompt for secrets that is known as such
    std::function<void(CursorKind)> cursor;
    std::function<void(FrontWindow)> frontmost;
};

/// A desktop that can tell what the user does on it.
class EventSource {
public:
    virtual ~EventSource() = default;
    /// Reports the pointer's shape and what is in front at once, on the caller's thread, and then every change.
    virtual void start(EventHandlers handlers) = 0;
    /// No handler runs after it.
    virtual void stop() = 0;
    /// Any thread. Ends all waiting for a desktop that does not answer; it tells nothing from then on.
    virtual void giveUp() {}

    /// Whether keys can be read, and are.
    virtual bool hasKeyboard() const = 0;
    /// Whether the window that it reports is surely the one that the keys go to.
    virtual bool knowsFront() const { return true; }
    /// Sentences: what of all this it cannot tell.
    virtual std::vector<std::string> limits() const { return {}; }
    /// Where the pointer is; none where that cannot be known. Any thread.
    virtual std::optional<PixelPoint> pointer() = 0;
};

}
