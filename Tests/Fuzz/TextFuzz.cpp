#include <TavaroCore/Privacy/SensitiveTextClassifier.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// The first line is a custom word, the second a custom pattern, the rest is searched line by line.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string_view text(reinterpret_cast<char const*>(data), size);
    auto const nextLine = [&] {
        auto const line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        return std::string(line);
    };
    tavaro::RedactionSettings settings;
    settings.customWords = {nextLine()};
    settings.customPatterns = {nextLine()};
    tavaro::SensitiveTextClassifier classifier(settings);
    tavaro::LinesAbove above;
    while (!text.empty()) {
        auto const line = nextLine();
        std::size_t before = 0;
        for (auto const& match : classifier.matches(line, above)) {
            if (match.start < before || match.length == 0 || match.end() > line.size()) std::abort();
            before = match.end();
        }
    }
    return 0;
}
