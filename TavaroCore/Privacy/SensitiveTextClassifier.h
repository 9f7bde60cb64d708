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

/// What the lines of a text tell of the one below them: a label alone announces a value, a key file goes on. As it is
/// made, nothing is above.
struct LinesAbove {
    enum class Expected {
        nothing,
        password,
        phrase,
        secret,
        code,
        restOfSecret, // a long one that filled the line
        bodyOfKeyFile,
        bodyOfPublicFile,
    };
    Expected expected = Expected::nothing;
};

/// Finds what is private in lines of text from the screen: a fixed catalogue of rules for the enabled kinds and readers
/// of what expressions cannot tell, then the custom words and patterns. Text recognition reads a hyphen as a dash and a
/// one as an l; the rules and the words allow for it. One thread at a time.
class SensitiveTextClassifier {
public:
    /// Off, every rule runs on every line: slower, with the same findings.
    enum class Prefilter { on, off };

    explicit SensitiveTextClassifier(RedactionSettings const& settings, Prefilter prefilter = Prefilter::on);
    ~SensitiveTextClassifier();

    /// The findings in a line of UTF-8, by their start. Where two overlap, that of the earlier rule counts; of a secret
    /// the rest is a finding of its own, so that no part of it stays legible, and other things are dropped whole.
    /// Custom words come last but one, custom patterns last. Any line takes bounded time: long ones
    /// are read in overlapping windows, and a pattern that takes too long on a line is given up there, and altogether
    /// after five such lines.
    std::vector<SensitiveMatch> matches(std::string_view line);

    /// The same for the next line of a text, which what is above it says more of.
    std::vector<SensitiveMatch> matches(std::string_view line, LinesAbove& above);

    /// Sentences about custom patterns that cannot be used, and those that took too long on a line so far.
    std::vector<std::string> const& warnings() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
