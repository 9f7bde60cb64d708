#pragma once

#include <TavaroCapture/X11/Desktop.h>
#include <TavaroCapture/X11/Private/GrabTarget.h>

namespace tavaro::x11 {

/// Shows the window, and over it the popups and dialogs that belong to it, or all windows of its application.
std::unique_ptr<GrabTarget> makeWindowTarget(Connection& connection, ResolvedSource const& source);

}
