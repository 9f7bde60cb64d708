#include <TavaroCapture/Devices/Private/OpenSources.h>

#include <TavaroCapture/Input/Private/OpenInput.h>
#include <TavaroCapture/PipeWire/Private/PipeWireCameras.h>
#include <TavaroCapture/Pulse/Private/ApplicationSound.h>
#include <TavaroCapture/Pulse/Private/PulseSound.h>
#include <TavaroCapture/Secrets/Private/GuardedEvents.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/V4L2/Private/VideoCameras.h>
#include <TavaroCapture/Wayland/Private/SharedDesktop.h>
#include <TavaroCapture/X11/Private/InputMonitor.h>
#include <TavaroCapture/X11/Private/ScreenGrabber.h>
#include <TavaroPlatform/Processes/DesktopSession.h>

#include <fmt/format.h>

namespace tavaro {

DesktopAccess desktopAccess(std::string const& display) {
    bool const isWayland = display.empty() && desktopKind() == DesktopKind::wayland;
    return isWayland ? DesktopAccess::asked : DesktopAccess::open;
}

DesktopSources openSharedDesktop(SharedDesktopOptions const& options, Asking const& asking) {
    auto shared = wayland::shareDesktop(options.source, options.fps, asking);
    auto const pointer = shared.tellsPointer ? input::DesktopPointer::told : input::DesktopPointer::untold;
    auto const consent = inputConsent();
    auto events = input::withInput(std::move(shared.events), {consent, pointer, options.keys.logging});
    return {std::move(shared.screen), consent ? guarded(std::move(events), options.keys, {}) : std::move(events)};
}

std::unique_ptr<ScreenSource> openScreen(CaptureSource const& source, std::string const& display) {
    return std::make_unique<x11::ScreenGrabber>(source, display);
}

std::unique_ptr<EventSource> openEvents(std::string const& display, LoggedKeys const& keys) {
    return guarded(std::make_unique<x11::InputMonitor>(display, keys.logging), keys, display);
}

std::unique_ptr<SoundSource> openMicrophone(MicrophoneSource const& source, std::string const& server) {
    return std::make_unique<pulse::PulseSound>(
        pulse::PulseSound::Options{.server = server, .source = source.id, .role = StreamRole::microphone});
}

std::unique_ptr<SoundSource> openSystemSound(SystemSoundSource const& source, std::string const& server) {
    if (!source.application.empty()) return std::make_unique<pulse::ApplicationSound>(server, source.application);
    return std::make_unique<pulse::PulseSound>(
        pulse::PulseSound::Options{.server = server, .role = StreamRole::systemSound});
}

std::unique_ptr<CameraSource> openCamera(CameraDeviceSource const& source) {
    if (auto kernels = v4l2::openCamera(v4l2::kernelVideo(), source)) return kernels;
    if (auto servers = pipewire::openCamera(source)) return servers;
    if (source.id.empty()) throw CaptureError(CaptureError::Kind::noCamera, "There is no camera.");
    throw CaptureError(CaptureError::Kind::noCamera,
                       fmt::format("There is no camera “{}”. `tavaro sources` lists those there are.", source.id));
}

}
