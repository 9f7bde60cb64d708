#pragma once

#include <TavaroCapture/X11/Connection.h>

#include <string>

namespace tavaro::x11 {

/// The desktop whose applications are worked, as in `$DISPLAY`, which an empty one means. Throws `AutomationError` with
/// what is missing here and what helps.
Connection automatedDesktop(std::string const& display);

/// Throws `AutomationError` (`failed`) where its server is gone.
void expectAlive(Connection const& connection);
[[noreturn]] void refuseGone();

/// Nothing can be worked here, for that reason.
[[noreturn]] void refuseDesktop(std::string const& reason);
[[noreturn]] void refuseWayland();

}
