#include <TavaroCapture/CameraSync/CameraSync.h>

#include <TavaroCapture/CameraSync/Private/ClapSession.h>
#include <TavaroCapture/Devices/Private/OpenSources.h>
#include <TavaroCapture/Sources/CaptureError.h>

#include <chrono>
#include <thread>

namespace tavaro {

CameraSync measuredCameraSync(CameraSyncOptions const& options, FunctionRef<bool()> isOver) {
    auto const camera = openCamera({.id = options.camera.id});
    auto const microphone = openMicrophone(options.microphone, options.soundServer);
    ClapSession session(*camera, *microphone);
    session.start();
    auto const end = std::chrono::steady_clock::now() + std::chrono::duration<double>(options.seconds);
    while (!isOver() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    session.stop();
    auto const match = session.match();
    if (match.doubt) throw CaptureError(CaptureError::Kind::unclear, *match.doubt);
    return {camera->id(), *match.lag, match.spread, match.seen};
}

}
