#pragma once

#include "TestPortalProgram.h"
#include "TestSession.h"

#include <optional>
#include <string>

namespace tavaro {

/// A real Wayland desktop without a screen: the compositor sway, which wlroots made, its part of the portal and the
/// portal. Whoever asks for a screen gets it. This process belongs to the desktop while it lives.
class TestSway {
public:
    static bool isInstalled();
    /// Of one screen of that size.
    TestSway(int width, int height);

    TestSession& session() { return session_; }
    /// As one writes it for `swaymsg`.
    void order(std::string const& command) const;
    /// Whether it does so: not where no window is meant.
    bool obeys(std::string const& command) const;
    /// Along the top of the screen, of that colour ("ff0000"), until the next one or the end.
    void showBar(std::string const& colour);
    void kill() { compositor_.reset(); }

private:
    void startCompositor(int width, int height);

    TestSession session_;
    std::filesystem::path runtime_; // the compositor's
    ScopedVariable display_;
    ScopedVariable x11_{"DISPLAY", ":4711"}; // as of the X server for programs that know no other: never asked
    std::optional<TestProcess> compositor_;
    std::optional<TestProcess> part_;
    std::optional<TestPortalProgram> portal_;
    std::optional<TestProcess> bar_;
};

}
