#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// What an engine can be given: many know no letters but those of English.
enum class Letters { all, ascii };

/// A word as it is in the text, and as the engine is given it.
struct SpokenWordText {
    std::string shown;
    std::string spoken;

    bool operator==(SpokenWordText const&) const = default;
};
using SpokenPhrase = std::vector<SpokenWordText>;

constexpr std::size_t mostSpokenCharacters = 10'000;

/// The text as phrases of at most some fifty words, which mostly are its sentences. Nothing in what is spoken means
/// anything to an engine but words and pauses: marks that one might read as its own (quotes, brackets, backslashes,
/// control characters) are not in it, nor is what cannot be said, such as emoji. Other alphabets are transcribed where
/// the engine needs ASCII. Bytes that are no UTF-8 are left out. Throws `VoiceError`: `nothingToSay`, `tooLong`.
std::vector<SpokenPhrase> spokenPhrases(std::string const& text, Letters letters);

/// Whether there is anything in a text that can be said: "🎉" and "—" have nothing.
bool canBeSaid(std::string_view text);

/// What is spoken of it, with spaces between.
std::string spokenText(SpokenPhrase const& phrase);

}
