#include <TavaroCapture/Devices/ListSources.h>

#include <TavaroCapture/Pulse/Private/SoundDevices.h>
#include <TavaroCapture/V4L2/Private/VideoCameras.h>
#include <TavaroCapture/X11/Connection.h>
#include <TavaroCapture/X11/Desktop.h>

namespace tavaro {

SourceList listSources(std::string const& display, std::string const& soundServer) {
    x11::Connection connection(display);
    auto sound = pulse::soundDevices(soundServer);
    return {x11::displays(connection), x11::windows(connection), std::move(sound.microphones),
            std::move(sound.systemSound), v4l2::cameras(*v4l2::kernelVideo())};
}

}
