#pragma once

#include <TavaroCapture/Sources/Private/EventSource.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>
#include <TavaroCapture/Sources/Private/SoundSource.h>

#include <memory>

namespace tavaro {

/// What a take records: a screen and what happens on it, and beside it what was asked for.
struct TakeSources {
    std::unique_ptr<ScreenSource> screen;
    std::unique_ptr<EventSource> events;
    std::unique_ptr<CameraSource> camera;     // none: not wanted
    std::unique_ptr<SoundSource> microphone;  // none: not wanted
    std::unique_ptr<SoundSource> systemSound; // none: not wanted
};

}
