#pragma once

#include <TavaroCapture/Sources/DesktopEntries.h>
#include <TavaroCapture/Sources/SourceList.h>
#include <TavaroCapture/X11/Connection.h>

/// What is on the desktop, and which part of it a source means.
namespace tavaro::x11 {

std::vector<DisplayInfo> displays(Connection& connection);
/// Frontmost first, without desktops, docks and popups.
std::vector<WindowInfo> windows(Connection& connection);
/// As the window says, else the server; 0 where neither does.
int processOf(Connection& connection, xcb_window_t window);
ApplicationIdentity applicationOf(Connection& connection, xcb_window_t window);

/// What a source comes down to: an area of the root, or a top-level window (and its application's other windows).
struct ResolvedSource {
    PixelRect frame;                  // on the desktop now
    std::string display = {};         // the name of the one that the area belongs to, wherever that is; empty: none
    xcb_window_t topLevel = XCB_NONE; // for windows and applications
    bool wholeApplication = false;
};

/// Throws `CaptureError` with a sentence for a source that is missing, empty, minimised or off-screen.
ResolvedSource resolve(Connection& connection, CaptureSource const& source);

}
