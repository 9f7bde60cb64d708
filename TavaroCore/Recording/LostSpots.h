#pragma once

#include <TavaroCore/Recording/CaptureHealth.h>

#include <optional>
#include <string>

namespace tavaro {

/// Where in the recording something of it is missing, as a sentence; none where nothing is known to be.
std::optional<std::string> lostSpots(CaptureHealth const& health);

}
