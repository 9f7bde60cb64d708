#pragma once

#include <TavaroCapture/Sources/StreamRole.h>

#include <filesystem>

namespace tavaro {

/// A stream of a take beside its screen, whole: a movie or a sound file in the working folder.
struct TakeStream {
    StreamRole role = StreamRole::camera;
    std::filesystem::path file;
    double offset = 0;   // seconds of the take at which it begins; below 0 where it ran before
    double duration = 0; // seconds
};

}
