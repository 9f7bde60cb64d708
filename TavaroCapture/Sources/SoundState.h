#pragma once

#include <TavaroCapture/Sources/StreamRole.h>

#include <string>

namespace tavaro {

/// One of the sounds of a take at this moment.
struct SoundState {
    StreamRole role = StreamRole::microphone;
    float level = 0;          // of the last tenth of a second, as in the log's `micLevels`
    bool isAway = false;      // its device is gone: silence until it is back
    double silentSeconds = 0; // how long there has been not even noise, up to now
    std::string awaited = {}; // the application that is to be heard and has not played anything yet
};

}
