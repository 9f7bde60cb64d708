#include <TavaroCapture/Devices/ListSources.h>

#include <TavaroCapture/Devices/Private/OpenSources.h>
#include <TavaroCapture/Input/Private/OpenInput.h>
#include <TavaroCapture/PipeWire/Private/PipeWireCameras.h>
#include <TavaroCapture/Pulse/Private/SoundDevices.h>
#include <TavaroCapture/V4L2/Private/VideoCameras.h>
#include <TavaroCapture/Wayland/Private/SharedDesktop.h>
#include <TavaroCapture/X11/Connection.h>
#include <TavaroCapture/X11/Desktop.h>

#include <algorithm>
#include <fmt/format.h>
#include <iterator>

namespace tavaro {

namespace {

void listCameras(SourceList& list) {
    auto kernels = v4l2::cameras(v4l2::kernelVideo());
    list.cameras = std::move(kernels.cameras);
    for (auto const& node : kernels.silent)
        list.limits.push_back(fmt::format("The camera “{}” does not answer, so it cannot be recorded.", node));
    for (auto& camera : pipewire::cameras()) {
        camera.isDefault = list.cameras.empty();
        list.cameras.push_back(std::move(camera));
    }
}

void listDesktop(SourceList& list, std::string const& display) {
    if (desktopAccess(display) == DesktopAccess::asked) {
        auto shareable = wayland::shareable();
        if (!shareable.displays.empty() || !shareable.windows.empty())
            list.limits = input::inputLimits(
                {inputConsent(), shareable.tellsPointer ? input::DesktopPointer::told : input::DesktopPointer::untold});
        list.displays = std::move(shareable.displays);
        list.windows = std::move(shareable.windows);
        std::ranges::move(shareable.limits, std::back_inserter(list.limits));
        return;
    }
    x11::Connection connection(display);
    list.displays = x11::displays(connection);
    list.windows = x11::windows(connection);
}

}

SourceList listDevices(std::string const& soundServer) {
    SourceList list;
    auto sound = pulse::soundDevices(soundServer);
    list.microphones = std::move(sound.microphones);
    list.systemSound = std::move(sound.systemSound);
    listCameras(list);
    if (list.microphones.empty() && !list.systemSound)
        list.limits.emplace_back("No sound can be recorded: no sound server answers.");
    return list;
}

SourceList listSources(std::string const& display, std::string const& soundServer) {
    SourceList list;
    listDesktop(list, display);
    auto devices = listDevices(soundServer);
    list.microphones = std::move(devices.microphones);
    list.systemSound = std::move(devices.systemSound);
    list.cameras = std::move(devices.cameras);
    std::ranges::move(devices.limits, std::back_inserter(list.limits));
    return list;
}

}
