#pragma once

#include <TavaroCore/Privacy/Redaction.h>

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace tavaro {

/// What one look at a line tells; rules that cannot match are not tried.
class LineFacts {
public:
    explicit LineFacts(std::string_view line);

    std::string_view line() const { return line_; }
    bool isASCII() const { return isASCII_; }
    /// ASCII digits; a line with other characters may have digits of other scripts, which the rules accept too.
    std::size_t digits() const { return digits_; }
    bool has(char c) const { return present_[static_cast<unsigned char>(c)]; }
    bool has(std::string_view literal) const { return has(literal.front()) && line_.find(literal) != line_.npos; }
    /// In either case. True for every line that is not ASCII, as more than one character folds to ASCII letters: the
    /// kelvin sign to k, the long s to s, the sharp s to two of them.
    bool hasWord(std::string_view lowerCase) const;

private:
    std::string_view line_;
    std::array<bool, 256> present_{};
    std::size_t digits_ = 0;
    bool isASCII_ = true;
};

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
};

/// The built-in rules in the order in which they claim text.
std::span<SensitiveRule const> sensitiveRules();

}
