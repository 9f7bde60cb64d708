#pragma once

#include <TavaroCapture/Sources/SourceList.h>

namespace tavaro {

/// What the X server `display` (":0") shows right now; empty means this desktop: `$DISPLAY`, or what a Wayland one
/// shares when asked, without asking. Works without a window manager, by the server's own list of top-level windows.
/// Throws `CaptureError` when no server answers. Sound is that of the server `soundServer`, as in `$PULSE_SERVER`,
/// which an empty one means; without one there is none.
SourceList listSources(std::string const& display = {}, std::string const& soundServer = {});
/// The same without a desktop: cameras and sound.
SourceList listDevices(std::string const& soundServer = {});

}
