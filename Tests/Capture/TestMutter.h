#pragma once

#include "TestPortal.h"

#include <TavaroCapture/Sources/CaptureSource.h>

#include <optional>
#include <string>

namespace tavaro {

/// A real Wayland desktop without a screen: mutter, GNOME's compositor, and the portal before a part that shares what
/// mutter has without asking. This process belongs to the desktop while it lives.
class TestMutter {
public:
    static bool isInstalled();
    TestMutter(int width, int height);

    TestSession& session() { return session_; }
    /// What is shared from now on: 1 the screen, 2 the window in front.
    void share(int kind);
    /// Of what is shared, in its pixels.
    void movePointer(PixelPoint point) const;
    /// A window of that size and one colour ("#ff0000"), in front, until the next one or the end.
    void showWindow(int width, int height, std::string const& colour);
    void kill() { compositor_.reset(); }

private:
    std::filesystem::path answers() const { return session_.folder() / "answers.json"; }

    TestSession session_;
    ScopedVariable display_{"WAYLAND_DISPLAY", "wayland-0"};
    ScopedVariable x11_{"DISPLAY", ":4711"}; // as of the X server for programs that know no other: never asked
    std::optional<TestProcess> compositor_;
    std::optional<TestProcess> part_;
    std::optional<TestPortalProgram> portal_;
    std::optional<TestProcess> window_;
};

}
