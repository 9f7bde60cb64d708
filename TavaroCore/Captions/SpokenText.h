#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// What captions and transcripts need to know about text: its length, its words, and when two words are the same. Texts
/// are UTF-8; a byte that is not counts as one character.
namespace tavaro {

/// Unicode scalar values.
std::size_t lengthOf(std::string_view text);

/// The text in lower case, without the punctuation and white space around it.
std::string bareText(std::string_view text);

/// The text without the white space around it.
std::string_view trimmed(std::string_view text);

/// The stretches between white space, in order; they lie in the text.
std::vector<std::string_view> writtenWords(std::string_view text);

/// The word in parts of `maxLength` Unicode scalar values at most, as far as its script lets lines break between
/// letters (Han, Kana, Thai …); the whole word where it does not. The parts lie in the word.
std::vector<std::string_view> brokenWord(std::string_view word, std::size_t maxLength);

}
