#include <TavaroCore/Privacy/TextFindings.h>

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>

#include <fmt/format.h>

#include <algorithm>

namespace tavaro {

std::string maskedValue(std::string_view value) {
    std::size_t first = 1;
    while (first < value.size() && (value[first] & 0xC0) == 0x80) ++first;
    return fmt::format("{}•••••• ({} bytes)", value.substr(0, first), value.size());
}

void forEachFinding(std::string_view text, SensitiveTextClassifier& classifier, FindingKey const& key,
                    std::function<void(TextFinding const&)> const& found) {
    LinesAbove above;
    for (std::int64_t number = 1; !text.empty(); ++number) {
        auto line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        for (auto const& match : classifier.matches(line, above)) {
            auto const value = line.substr(match.start, match.length);
            found({number, static_cast<std::int64_t>(match.start) + 1, static_cast<std::int64_t>(match.length),
                   match.kind, match.label, maskedValue(value), findingHash(value, key)});
        }
    }
}

std::vector<TextFinding> findingsIn(std::string_view text, SensitiveTextClassifier& classifier, FindingKey const& key) {
    std::vector<TextFinding> findings;
    forEachFinding(text, classifier, key, [&](TextFinding const& finding) { findings.push_back(finding); });
    return findings;
}

}
