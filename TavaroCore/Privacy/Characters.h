#pragma once

#include <cstddef>
#include <string_view>

/// Kinds of bytes of UTF-8, whatever the locale; letters and digits are those of ASCII.
namespace tavaro {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool isLower(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool isLetter(char c) { return isUpper(c) || isLower(c); }
constexpr bool isAlphanumeric(char c) { return isLetter(c) || isDigit(c); }
constexpr bool isHexDigit(char c) { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }
constexpr bool isBlank(char c) { return c == ' ' || c == '\t'; }
constexpr bool isQuote(char c) { return c == '"' || c == '\'' || c == '`'; }
constexpr bool isBeyondASCII(char c) { return static_cast<unsigned char>(c) >= 0x80; }
constexpr char lower(char c) { return isUpper(c) ? static_cast<char>(c + 32) : c; }
constexpr bool isAnyOf(char c, std::string_view characters) { return characters.find(c) != characters.npos; }

/// What a reader of pictures confuses made one: O and 0; 1, I, l, i and |. Case stays otherwise.
constexpr char lookAlike(char c) {
    if (c == '0' || c == 'O') return 'o';
    return isAnyOf(c, "1Ii|") ? 'l' : c;
}

/// The first place from `at` on that is no blank, or the end.
constexpr std::size_t pastBlanks(std::string_view text, std::size_t at) {
    while (at < text.size() && isBlank(text[at])) ++at;
    return at;
}

}
