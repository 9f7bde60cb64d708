#pragma once

#include <TavaroCore/Privacy/Characters.h>

#include <cstddef>
#include <string_view>
#include <vector>

namespace tavaro {

/// Letters that a reader confuses as one, whatever their case.
constexpr char folded(char c) { return lookAlike(lower(c)); }

/// A text with one letter off, all others alike.
bool isNearly(std::string_view text, std::string_view word);
/// All letters alike.
bool isAlike(std::string_view text, std::string_view word);

constexpr std::size_t fewestDifferent = 8; // letters and digits of a key
std::size_t differentIn(std::string_view text);
/// Letters and digits in a disorder that no words have.
bool looksMade(std::string_view text);

/// Digits, or small letters and capitals: no word of a language.
bool isMixed(std::string_view text);

/// A part of a line.
struct ReadPiece {
    std::size_t start = 0; // bytes
    std::size_t end = 0;
    std::size_t size() const { return end - start; }
};

/// Words between blanks, from the last to the first: what is mended behind one leaves those before it in their places.
std::vector<ReadPiece> wordsFromEnd(std::string_view text);

}
