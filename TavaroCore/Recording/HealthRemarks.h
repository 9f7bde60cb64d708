#pragma once

#include <TavaroCore/Recording/CaptureHealth.h>

#include <string>
#include <vector>

namespace tavaro {

/// What there is to tell of a take beside its summary, which names the gravest trouble only: the others, and where in
/// the recording something is missing.
std::vector<std::string> healthRemarks(CaptureHealth const& health);

}
