#pragma once

#include <TavaroCore/Privacy/FindingHash.h>
#include <TavaroCore/Recording/RecordingMetadata.h>
#include <TavaroCore/Records/CopyOnWrite.h>
#include <TavaroCore/Values/TimeRange.h>

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace tavaro {

/// What a log has to tell no more.
struct SecretsOfLog {
    std::vector<TimeRange> typed; // when secrets grew on the screen, in seconds of the recording
    std::set<std::string> hashes; // of the secrets
    FindingKey key;
};

/// Takes out the letters that were typed then, and names of applications and windows that hold one of the secrets.
/// Returns how many strokes lost letters.
std::size_t scrubLog(CopyOnWrite<RecordingMetadata>& log, SecretsOfLog const& secrets);

}
