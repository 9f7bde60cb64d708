#pragma once

#include <TavaroCapture/Secrets/Private/GuardedEvents.h>
#include <TavaroCapture/Sources/Asking.h>
#include <TavaroCapture/Sources/Private/EventSource.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>
#include <TavaroCapture/Sources/Private/SoundSource.h>

#include <memory>
#include <string>

namespace tavaro {

enum class DesktopAccess {
    open,  // everything can be recorded at once
    asked, // the user is asked what to share when it is opened
};
/// How the desktop is reached: what was started on a Wayland one sees no other, but a named X server is one in any
/// case.
DesktopAccess desktopAccess(std::string const& display);

struct DesktopSources {
    std::unique_ptr<ScreenSource> screen;
    std::unique_ptr<EventSource> events;
};
struct SharedDesktopOptions {
    CaptureSource source;
    int fps = 60;
    LoggedKeys keys;
};
/// Asks the user what to share, where they have not said so before. Throws `CaptureError`.
DesktopSources openSharedDesktop(SharedDesktopOptions const& options, Asking const& asking);

/// Opens a source of the desktop on the X server `display` (empty means `$DISPLAY`). Throws `CaptureError` for a source
/// that cannot be recorded, and when no server answers.
std::unique_ptr<ScreenSource> openScreen(CaptureSource const& source, std::string const& display);

/// Throws `CaptureError` when no server answers, or one that does not tell of clicks and keys.
std::unique_ptr<EventSource> openEvents(std::string const& display, LoggedKeys const& keys);

/// Finds a device of the sound server, given as in `$PULSE_SERVER` (empty means that, or the session's own). It is open
/// only while it is recorded. Throws `CaptureError` when there is none, and when no server answers.
std::unique_ptr<SoundSource> openMicrophone(MicrophoneSource const& source, std::string const& server);
std::unique_ptr<SoundSource> openSystemSound(SystemSoundSource const& source, std::string const& server);

/// Throws `CaptureError` (`noCamera`) when there is none, and when it cannot be used. It is open only while it is
/// filmed.
std::unique_ptr<CameraSource> openCamera(CameraDeviceSource const& source);

}
