#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tavaro {

/// The beginning of a text in UTF-8, of at most that many bytes and no part of a character.
std::string_view wholeCharacters(std::string_view text, std::size_t mostBytes);

/// The beginning of a text from outside as a sentence can carry it: without control characters, in whole characters,
/// and with "…" where it is longer than `mostBytes`.
std::string excerpt(std::string_view text, std::size_t mostBytes = 100);

}
