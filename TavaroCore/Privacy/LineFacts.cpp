#include <TavaroCore/Privacy/Private/LineFacts.h>

#include <TavaroCore/Privacy/Characters.h>

#include <algorithm>

namespace tavaro {

namespace {

std::size_t pairOf(char a, char b) {
    return (static_cast<unsigned char>(lower(a)) * std::size_t{37} ^ static_cast<unsigned char>(lower(b))) % 1024;
}

}

LineFacts::LineFacts(std::string_view line) : line_(line) {
    char before = 0;
    for (char const c : line) {
        present_[static_cast<unsigned char>(c)] = true;
        pairs_.set(pairOf(before, c));
        if (isDigit(c)) ++digits_;
        if (isBeyondASCII(c)) isASCII_ = false;
        before = c;
    }
}

bool LineFacts::mayHave(std::string_view literal) const {
    if (literal.size() == 1) return has(literal[0]);
    for (std::size_t i = 1; i < literal.size(); ++i) {
        if (!pairs_.test(pairOf(literal[i - 1], literal[i]))) return false;
    }
    return true;
}

bool LineFacts::hasWord(std::string_view lowerCase) const {
    if (!isASCII_) return true;
    if (!mayHave(lowerCase)) return false;
    auto const isSame = [](char a, char b) { return lower(a) == b; };
    return std::search(line_.begin(), line_.end(), lowerCase.begin(), lowerCase.end(), isSame) != line_.end();
}

}
