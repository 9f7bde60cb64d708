#include <TavaroCore/Privacy/Private/Words.h>

#include <TavaroCore/Privacy/Characters.h>

namespace tavaro {

namespace {

bool isOfWord(char c) { return isAlphanumeric(c) || isBeyondASCII(c); }

/// The lead bytes of kana, ideographs and hangul.
bool beginsEastAsian(char c) {
    auto const byte = static_cast<unsigned char>(c);
    return byte >= 0xE3 && byte <= 0xED;
}

/// "api|Key", "API|Key", "API|キー".
bool isBorder(std::string_view text, std::size_t at) {
    char const before = text[at - 1], c = text[at];
    if (isUpper(c) && isLower(before)) return true;
    if (isUpper(c) && isUpper(before)) return at + 1 < text.size() && isLower(text[at + 1]);
    return (beginsEastAsian(c) && !isBeyondASCII(before)) ||
           (isBeyondASCII(before) && isAlphanumeric(c) && at >= 3 && beginsEastAsian(text[at - 3]));
}

}

std::vector<Word> wordsOf(std::string_view text) {
    std::vector<Word> words;
    words.reserve(text.size() / 4);
    for (std::size_t i = 0; i < text.size();) {
        if (!isOfWord(text[i])) {
            ++i;
            continue;
        }
        auto const start = i++;
        while (i < text.size() && isOfWord(text[i]) && !isBorder(text, i)) ++i;
        bool const touches = !words.empty() && words.back().end == start;
        bool const isAfterJoint = !words.empty() && words.back().end + 1 == start && isAnyOf(text[start - 1], "-_.");
        words.push_back({start, i, touches || isAfterJoint});
    }
    return words;
}

}
