#pragma once

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>

#include <cstddef>
#include <optional>
#include <string_view>

namespace tavaro {

constexpr std::size_t longestWrapped = 512; // bytes of a line that what is above it may speak of

struct ExpectedValue {
    SensitiveKind kind = SensitiveKind::secret;
    std::size_t start = 0; // bytes into the plain line
    std::size_t end = 0;
};

/// What in a plain line is private because of the lines above it.
std::optional<ExpectedValue> valueExpected(std::string_view text, LinesAbove const& above);

/// Whether a finding is one that may go on in the next line: long, random, and the last thing in its own.
bool isSecretThatWraps(std::string_view fromFinding, std::size_t length);

/// What the next line is to be read with.
LinesAbove expectedBelow(std::string_view text, LinesAbove const& above, bool endsWithSecret);

}
