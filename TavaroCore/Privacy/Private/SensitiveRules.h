#pragma once

#include <TavaroCore/Privacy/Private/LineFacts.h>
#include <TavaroCore/Privacy/Redaction.h>

#include <cstddef>
#include <span>
#include <string_view>

namespace tavaro {

/// A candidate for a finding.
struct SensitiveCandidate {
    std::string_view line;
    std::size_t start = 0; // bytes
    std::size_t length = 0;
    std::size_t wholeStart = 0; // of the whole match, where only a part is the value

    std::string_view text() const { return line.substr(start, length); }
    std::string_view before() const { return line.substr(0, start); }
    std::string_view after() const { return line.substr(start + length); }
};

/// One entry of the catalogue. A null test always holds.
struct SensitiveRule {
    SensitiveKind kind;
    int group;                                    // the sensitive part; 0 is the whole match
    char const* expression;                       // ICU regular expression
    bool (*canMatch)(LineFacts const&);           // false only for lines without a match
    bool (*isPrivate)(SensitiveCandidate const&); // of a match
    enum class WhenNot { mayBeAnother, isHarmless } whenNot = WhenNot::mayBeAnother;
};

/// The built-in rules in the order in which they claim text.
std::span<SensitiveRule const> sensitiveRules();

}
