#include <TavaroCore/Recording/RecordingMetadata.h>
#include <TavaroCore/Records/JSON.h>

#include <cstdlib>

// A hand-written log or a checkpoint of a take: read or refused, and its queries hold for whatever was read.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    try {
        auto const log = tavaro::decodeJSON<tavaro::RecordingMetadata>({reinterpret_cast<char const*>(data), size});
        for (double const t : {-1.0, 0.0, 0.5, log.duration()}) {
            if (log.cursorPosition(t).has_value() == log.cursorSamples.empty()) std::abort();
            log.application(t);
        }
        if (log.health.summary().empty()) std::abort();
    } catch (tavaro::JSONError const&) {
    }
    return 0;
}
