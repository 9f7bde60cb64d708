#pragma once

#include "../Capture/TestDisplay.h"
#include "../Core/Package/TemporaryFolder.h"
#include "Elements/FakeProgram.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace tavaro {

/// A desktop of its own: a display, a window manager, a session with its bus, and the galleries of widgets installed as
/// applications. One at a time in a process, whose variables it sets. Its programs end with it.
class TestDesktop {
public:
    TestDesktop();
    ~TestDesktop();
    TestDesktop(TestDesktop const&) = delete;
    TestDesktop& operator=(TestDesktop const&) = delete;

    /// What is not installed here; empty where nothing is missing.
    static std::string missing();
    /// Whether a program of `Galleries` can run here: "gtk3", "gtk4", "qt5".
    static bool canRun(std::string const& gallery);

    std::string const& display() const { return display_->name(); }
    /// Installs a gallery as an application of that name.
    void install(std::string const& name, std::string const& gallery, std::string const& arguments = {}) const;
    /// What was done to the galleries' widgets.
    std::string log() const;

private:
    TemporaryFolder const folder_;
    std::optional<TestDisplay> display_;
    std::optional<TestBus> session_;
    pid_t windowManager_ = 0;
};

}
