#pragma once

#include <TavaroCore/Privacy/FindingHash.h>
#include <TavaroCore/Privacy/Redaction.h>
#include <TavaroCore/Records/Fields.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

class SensitiveTextClassifier;

/// Something private in a text of many lines; never its value.
struct TextFinding {
    std::int64_t line = 0;   // from 1
    std::int64_t column = 0; // in bytes, from 1
    std::int64_t length = 0; // in bytes
    SensitiveKind kind = SensitiveKind::custom;
    std::string label;
    std::string masked;   // its first character, and how long it is
    std::string textHash; // `findingHash`

    static constexpr auto fields = std::tuple{
        field("line", &TextFinding::line),         field("column", &TextFinding::column),
        field("length", &TextFinding::length),     field("kind", &TextFinding::kind),
        field("label", &TextFinding::label),       field("masked", &TextFinding::masked),
        field("textHash", &TextFinding::textHash),
    };
    bool operator==(TextFinding const&) const = default;
};
static_assert(listsEveryField<TextFinding>);

/// What of a value may be shown: its first character, and how long it is.
std::string maskedValue(std::string_view value);

/// What is private in each line, from the first to the last. A value on the line below its label is found, and so are
/// the lines of a key file and what a value goes on with.
void forEachFinding(std::string_view text, SensitiveTextClassifier& classifier, FindingKey const& key,
                    std::function<void(TextFinding const&)> const& found);
std::vector<TextFinding> findingsIn(std::string_view text, SensitiveTextClassifier& classifier, FindingKey const& key);

}
