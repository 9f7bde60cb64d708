#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace tavaro {

/// A run of letters and digits of one case style: "apiKey_2" is three.
struct Word {
    std::size_t start = 0; // bytes
    std::size_t end = 0;
    bool isJoined = false; // to the word before it, by a hyphen, an underscore, a dot or a change of case
};

/// Bytes beyond ASCII count as letters, but a change between ASCII and the scripts of East Asia divides words.
std::vector<Word> wordsOf(std::string_view text);

}
