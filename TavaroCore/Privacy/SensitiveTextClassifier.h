#pragma once

#include <TavaroCore/Privacy/Redaction.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// A piece of a line that should not be seen.
struct SensitiveMatch {
    SensitiveKind kind = SensitiveKind::custom;
    std::size_t start = 0;  // bytes into the line
    std::size_t length = 0; // bytes
    std::string label;      // shown instead of the value

    std::size_t end() const { return start + length; }
    bool operator==(SensitiveMatch const&) const = default;
};

/// "API key", "Card number" …
std::string_view displayName(SensitiveKind kind);

/// Finds what is private in lines of text from the screen: a fixed catalogue of rules for the enabled kinds, then the
/// custom words and patterns. Text recognition reads a hyphen as a dash and a one as an l; the rules and the words
/// allow for it. One thread at a time.
class SensitiveTextClassifier {
public:
    /// Off, every rule runs on every line: slower, with the same findings.
    enum class Prefilter { on, off };

    explicit SensitiveTextClassifier(RedactionSettings const& settings, Prefilter prefilter = Prefilter::on);
    ~SensitiveTextClassifier();

    /// The findings in a line of UTF-8, by their start. Where two overlap, that of the earlier rule counts and the
    /// other is dropped; custom words come last but one, custom patterns last. Any line takes bounded time: long ones
    /// are read in overlapping windows, and a pattern that takes too long on a line is given up there, and altogether
    /// after five such lines.
    std::vector<SensitiveMatch> matches(std::string_view line);

    /// Sentences about custom patterns that cannot be used, and those that took too long on a line so far.
    std::vector<std::string> const& warnings() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
