#pragma once

#include <TavaroCapture/X11/Private/GrabTarget.h>

namespace tavaro::x11 {

/// Shows an area of the desktop.
std::unique_ptr<GrabTarget> makeRootTarget(Connection& connection, PixelRect const& frame);

}
