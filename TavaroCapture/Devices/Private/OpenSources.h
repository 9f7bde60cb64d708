#pragma once

#include <TavaroCapture/Sources/Private/EventSource.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>

#include <memory>
#include <string>

namespace tavaro {

/// Opens a source of the desktop on the X server `display` (empty means `$DISPLAY`). Throws `CaptureError` for a source
/// that cannot be recorded, and when no server answers.
std::unique_ptr<ScreenSource> openScreen(CaptureSource const& source, std::string const& display);

/// Throws `CaptureError` when no server answers, or one that does not tell of clicks and keys.
std::unique_ptr<EventSource> openEvents(std::string const& display, KeyLogging keys);

}
