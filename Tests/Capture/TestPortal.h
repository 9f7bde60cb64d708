#pragma once

#include "TestPortalProgram.h"
#include "TestScreenNode.h"
#include "TestSession.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// A session of a Wayland desktop: the real xdg-desktop-portal, and behind it a desktop that answers at once what a
/// test wants. This process belongs to it while it lives.
class TestPortal {
public:
    struct Answers {
        int answer = 0;      // 1: no, 2: gave up, 3: none yet
        int kind = 1;        // of what is shared: 1 a monitor, 2 a window
        int kinds = 3;       // that can be shared
        int pointers = 7;    // modes of the pointer
        bool closes = false; // ends the share as soon as it began
    };

    TestPortal() : TestPortal(Answers{}) {}
    explicit TestPortal(Answers const& answers);
    static bool isInstalled();

    TestSession& session() { return session_; }
    TestScreenNode& screen() { return *screen_; }
    /// Also a new one in place of one that is gone.
    void showScreen(int width = 320, int height = 200, int silentBeginnings = 0);
    void killScreen() { screen_.reset(); }
    void answer(Answers const& answers);
    /// What the desktop's user was asked so far, as lines of JSON.
    std::vector<std::string> questions() const;

private:
    TestSession session_;
    ScopedVariable wayland_{"WAYLAND_DISPLAY", "wayland-test"};
    ScopedVariable x11_{"DISPLAY", ":4711"}; // as of the X server for programs that know no other: never asked
    std::optional<TestScreenNode> screen_;
    Answers answers_;
    std::optional<TestProcess> backend_;
    std::optional<TestPortalProgram> portal_;
};

}
