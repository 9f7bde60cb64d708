#include <TavaroVoice/Voiceover/StoredLine.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Speech/VoiceoverCaptions.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

using namespace tavaro;

// Any bytes beside a line's sound are a line, whose words are in order inside of it, or nothing; captions of it are
// too.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const line = decodeStoredLine({reinterpret_cast<char const*>(data), size});
    if (!line) return 0;
    if (!(line->duration > 0) || !std::isfinite(line->duration)) std::abort();
    std::vector<CaptionWord> said;
    for (auto const& [text, start, end] : line->words) {
        if (!(start <= end && end <= line->duration)) std::abort();
        said.push_back({text, start, end});
    }
    double before = 0;
    for (auto const& word : wordsAsSaid("I click here, then that's 42 of it.", {0, line->duration}, said)) {
        if (!(word.start >= before && word.end >= word.start && word.end <= line->duration)) std::abort();
        before = word.end;
    }
    return 0;
}
