#include <TavaroVision/Scanning/Private/KeyFileLines.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroVision/Scanning/Private/ScreenText.h>

#include <algorithm>
#include <cstdlib>

namespace tavaro {

bool isNearlyBase64(std::string_view text) {
    constexpr std::size_t shortest = 16;
    auto const isOther = [](char c) { return !isAlphanumeric(c) && c != '+' && c != '/' && c != '='; };
    auto const others = static_cast<std::size_t>(std::ranges::count_if(text, isOther));
    return text.size() >= shortest && others * 12 <= text.size() && isMixed(text);
}

std::vector<std::string_view> base64Words(std::string_view text) {
    constexpr std::size_t shortest = 24;
    std::vector<std::string_view> words;
    for (std::size_t start = 0; start < text.size();) {
        auto const end = std::min(text.find(' ', start), text.size());
        auto const word = text.substr(start, end - start);
        if (word.size() >= shortest && isNearlyBase64(word)) words.push_back(word);
        start = end + 1;
    }
    return words;
}

ReadPiece keyLineIn(std::string_view text) {
    constexpr std::size_t longest = 72;
    auto const start = text.find_last_of(' ') + 1;
    auto const body = text.substr(start);
    bool const isBody = body.size() <= longest && isNearlyBase64(body) && looksMade(body) &&
                        std::ranges::count(body, '/') * 8 <= static_cast<std::ptrdiff_t>(body.size());
    bool const isAlone = std::ranges::none_of(text.substr(0, start), isLetter);
    return isBody && isAlone ? ReadPiece{start, text.size()} : ReadPiece{};
}

bool isNextInFile(PlacedLine const& above, PlacedLine const& below) {
    auto const height = std::max(above.letterHeight, below.letterHeight);
    return below.box.y - above.box.bottom() <= 2 * height &&
           (std::abs(below.box.x - above.box.x) <= height || std::abs(below.box.right() - above.box.right()) <= height);
}

bool announcesPublicFile(std::string_view text) {
    return text.find("BEGIN ") != text.npos && text.find("PRIVATE") == text.npos;
}

}
