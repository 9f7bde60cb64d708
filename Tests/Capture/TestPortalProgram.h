#pragma once

#include "TestSession.h"

#include <filesystem>
#include <optional>
#include <string>

namespace tavaro {

/// The real xdg-desktop-portal in the session that this process belongs to, before a desktop's part of it that runs
/// already.
class TestPortalProgram {
public:
    static bool isInstalled();
    /// Whether a program of that name is on the session's bus.
    static bool isOnBus(std::string const& name);

    /// For the part of that desktop (`$XDG_CURRENT_DESKTOP`), known on the bus by a name, when it is there.
    TestPortalProgram(std::filesystem::path const& folder, std::string const& desktop, std::string const& name);

private:
    ScopedVariable desktop_;
    ScopedVariable parts_;
    std::optional<TestProcess> store_;
    std::optional<TestProcess> portal_;
};

}
