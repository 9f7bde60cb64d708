#include <TavaroVision/Scanning/Private/ReadPieces.h>

#include <algorithm>
#include <bitset>

namespace tavaro {

bool isNearly(std::string_view text, std::string_view word) {
    if (text.size() != word.size()) return false;
    int wrong = 0;
    for (std::size_t i = 0; i < word.size(); ++i) wrong += folded(text[i]) != folded(word[i]);
    return wrong == 1;
}

bool isAlike(std::string_view text, std::string_view word) {
    return std::ranges::equal(text, word, {}, folded, folded);
}

std::size_t differentIn(std::string_view text) {
    std::bitset<256> seen;
    for (char const c : text) seen.set(static_cast<unsigned char>(c));
    return seen.count();
}

bool looksMade(std::string_view text) {
    std::size_t digits = 0, changes = 0;
    int last = 0;
    for (char const c : text) {
        int const kind = isDigit(c) ? 1 : isUpper(c) ? 2 : isLower(c) ? 3 : 0;
        changes += kind != last && last != 0 && kind != 0;
        last = kind;
        digits += kind == 1;
    }
    return digits > 0 && differentIn(text) >= fewestDifferent && changes * 6 >= text.size();
}

bool isMixed(std::string_view text) {
    bool const hasSmall = std::ranges::any_of(text, isLower);
    return std::ranges::any_of(text, isDigit) || (hasSmall && std::any_of(text.begin() + 1, text.end(), isUpper));
}

std::vector<ReadPiece> wordsFromEnd(std::string_view text) {
    std::vector<ReadPiece> words;
    for (std::size_t at = 0; at < text.size();) {
        auto const start = text.find_first_not_of(' ', at);
        if (start == text.npos) break;
        at = std::min(text.find(' ', start), text.size());
        words.push_back({start, at});
    }
    std::ranges::reverse(words);
    return words;
}

}
