#pragma once

#include <TavaroCapture/Sources/Asking.h>
#include <TavaroCapture/Sources/Private/EventSource.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>
#include <TavaroCapture/Sources/SourceList.h>

#include <memory>
#include <string>
#include <vector>

/// The sources of a Wayland desktop: what the user shares of it, when asked.
namespace tavaro::wayland {

struct SharedDesktop {
    std::unique_ptr<ScreenSource> screen;
    std::unique_ptr<EventSource> events;
    bool tellsPointer = false; // where it is
};

/// Asks the user, unless an earlier answer for that source still counts. Throws `CaptureError`, without a question for
/// what the desktop cannot share.
SharedDesktop shareDesktop(CaptureSource const& source, int fps, Asking const& asking = {});

struct Shareable {
    std::vector<DisplayInfo> displays;
    std::vector<WindowInfo> windows;
    bool tellsPointer = false;       // where it is
    std::vector<std::string> limits; // sentences
};

/// What may be asked for, and what the desktop cannot give; without a portal that, in place of displays.
Shareable shareable();

}
