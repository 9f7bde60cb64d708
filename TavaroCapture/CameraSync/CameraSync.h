#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCore/Records/FunctionRef.h>

#include <string>

namespace tavaro {

struct CameraSyncOptions {
    CameraDeviceSource camera;
    MicrophoneSource microphone;
    std::string soundServer; // as in `$PULSE_SERVER`; empty means that, or the session's own
    double seconds = 10;     // of watching
};

/// By how much a camera tells the moments of its pictures too late, as a microphone hears them.
struct CameraSync {
    std::string camera; // its id, as listed
    double lag = 0;     // seconds
    double spread = 0;  // seconds: half of the claps were as near to it
    int claps = 0;
};

/// Watches somebody clap in view of the camera, until the time is over or `isOver` says so. Whatever lag the camera is
/// known to have is left out of account. Throws `CaptureError`: `noCamera`, `noSound`, and `unclear` where the claps do
/// not tell it.
CameraSync measuredCameraSync(CameraSyncOptions const& options, FunctionRef<bool()> isOver);

}
