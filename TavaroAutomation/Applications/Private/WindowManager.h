#pragma once

#include <TavaroCapture/X11/Connection.h>

#include <array>
#include <cstdint>

namespace tavaro::x11 {

bool hasWindowManager(Connection& connection);
/// About a window, or about the desktop where it is the root. Both send with the next flush.
void askWindowManager(Connection& connection, xcb_window_t window, char const* what,
                      std::array<std::uint32_t, 5> const& values = {});
/// The same of a window's own program.
void askProgram(Connection& connection, xcb_window_t window, char const* what,
                std::array<std::uint32_t, 5> const& values = {});

}
