#include <TavaroVoice/Script/ScriptText.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

void expect(bool holds) {
    if (!holds) std::abort();
}

}

// Any bytes are refused with a sentence, or read as lines whose text and times come back when they are written.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    try {
        auto lines = tavaro::readScript({reinterpret_cast<char const*>(data), size});
        expect(!lines.empty());
        double time = 0;
        for (auto& line : lines) {
            expect(!line.text.empty() && line.text.find('\n') == std::string::npos);
            if (line.time) expect(*line.time >= time && std::isfinite(*line.time));
            time = line.time.value_or(time);
            line.time = std::floor(time * 100) / 100;
        }
        auto const text = tavaro::scriptText(lines);
        auto const again = tavaro::readScript(text);
        expect(again.size() == lines.size() && tavaro::scriptText(again) == text);
    } catch (tavaro::ScriptTextError const& error) {
        expect(*error.what() != '\0');
    }
    return 0;
}
