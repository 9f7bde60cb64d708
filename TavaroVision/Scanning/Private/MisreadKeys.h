#pragma once

#include <TavaroCore/Privacy/Redaction.h>

#include <cstddef>
#include <functional>
#include <string_view>

namespace tavaro {

/// Calls `found` with pieces of a line that are keys and tokens of services but for what a reader gets wrong: a letter
/// of the prefix, the hyphen or underscore behind it, a letter too many or too few, a sign that no key has.
void forEachMisreadKey(std::string_view text,
                       std::function<void(SensitiveKind kind, std::size_t start, std::size_t end)> const& found);

/// Whether a text ends in the beginning of a key, of which there must be more.
bool endsInsideKey(std::string_view text);

}
