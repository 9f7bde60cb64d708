#pragma once

#include <TavaroCapture/Sources/SourceList.h>

#include <optional>
#include <string>
#include <vector>

namespace tavaro::pulse {

struct SoundDevices {
    std::vector<MicrophoneInfo> microphones;
    std::optional<SystemSoundInfo> systemSound;
};

/// What the sound server has, given as in `$PULSE_SERVER` (empty means that, or the session's own). Nothing where none
/// answers within a second.
SoundDevices soundDevices(std::string const& server);

}
