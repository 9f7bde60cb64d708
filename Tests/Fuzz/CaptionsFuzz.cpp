#include <TavaroCore/Captions/Subtitles.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

void expect(bool holds) {
    if (!holds) std::abort();
}

}

// Any bytes are refused with a sentence, or read as captions that a WebVTT file brings back.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    try {
        auto const cues = tavaro::readSubtitles({reinterpret_cast<char const*>(data), size});
        expect(!cues.empty());
        for (auto const& cue : cues) {
            expect(cue.start >= 0 && cue.duration >= 0 && std::isfinite(cue.range().end()));
            expect(!cue.text.empty());
        }
        tavaro::subRipText(cues);
        auto const text = tavaro::webVTTText(cues);
        auto const again = tavaro::readSubtitles(text);
        expect(std::equal(cues.begin(), cues.end(), again.begin(), again.end(), [](auto const& a, auto const& b) {
            return a.text == b.text && std::abs(a.start - b.start) < 0.001;
        }));
        expect(tavaro::webVTTText(again) == text);
    } catch (tavaro::SubtitleError const&) {
    }
    return 0;
}
