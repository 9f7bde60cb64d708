#pragma once

#include <ctime>
#include <string>

namespace tavaro {

/// "Recording 2026-03-01 at 09.30.15", by the clock on the wall.
std::string recordingName(std::time_t startedAt);
/// "Recovered 2026-03-01 at 09.30.15"
std::string recoveredName(std::time_t startedAt);

}
