#pragma once

#include <TavaroCapture/X11/Private/GrabTarget.h>

namespace tavaro::x11 {

/// Shows an area of the desktop. One that belongs to a display, by its name, follows it, ends where it does, and is
/// away as long as it is.
std::unique_ptr<GrabTarget> makeRootTarget(Connection& connection, PixelRect const& frame, std::string const& display);

}
