// What a voice-over costs. Prints one line a figure: name, value, unit. Takes the parts to be measured as names.

#include "ScriptBench.h"
#include "TranscriptionBench.h"
#include "VoiceoverBench.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace {

constexpr std::array<std::pair<std::string_view, void (*)()>, 3> parts{{{"script", tavaro::benchScript},
                                                                        {"transcription", tavaro::benchTranscription},
                                                                        {"voiceover", tavaro::benchVoiceover}}};

}

int main(int count, char** names) {
    for (int i = 1; i < count; ++i) {
        bool const isPart = std::ranges::any_of(parts, [&](auto const& part) { return part.first == names[i]; });
        if (isPart) continue;
        fmt::print(stderr, "bench-voice: there is no part “{}”\n", names[i]);
        return EXIT_FAILURE;
    }
    for (auto const& [name, measure] : parts)
        if (count == 1 || std::find(names + 1, names + count, name) != names + count) measure();
}
