#include <TavaroVision/Scanning/Private/WrappedLines.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroVision/Scanning/Private/MisreadKeys.h>
#include <TavaroVision/Scanning/Private/ReadPieces.h>
#include <TavaroVision/Scanning/Private/ScreenText.h>

#include <algorithm>
#include <string_view>

namespace tavaro {

namespace {

/// "…: lena.berg@e", "…=ghp_a8Kq2": no address and no key ends so.
bool endsOpen(PlacedLine const& line) {
    auto const& word = line.words.back().text;
    if (endsInsideKey(word)) return true;
    auto const sign = word.find('@');
    if (sign == word.npos || sign < 2) return false;
    auto const dot = word.find('.', sign);
    return dot == word.npos || word.size() - dot <= 2;
}

/// Whether a line may begin with the rest of a word that began in the line above: no word of a language.
bool mayBeginWithRest(PlacedLine const& line) {
    auto const& word = line.words.front().text;
    bool const hasHost = word.find('@') != word.npos; // "ain@db.acme.io:5432/shop"
    auto const isOfToken = [&](char c) {
        return isAlphanumeric(c) || std::string_view("+/_-.@").find(c) != std::string_view::npos ||
               (hasHost && c == ':');
    };
    auto const end = word.find_last_not_of("=>)\"',;:") + 1;
    if (end == 0 || !std::ranges::all_of(word.substr(0, end), isOfToken)) return false;
    return word.find_first_of("@.") < word.size() - 1 || isMixed(word);
}

}

RightEdge::RightEdge(std::span<PlacedLine const> lines, std::vector<std::size_t> const& column) {
    for (auto const line : column) furthest = std::max(furthest, lines[line].box.right());
    isWindows = std::ranges::count_if(column, [&](auto line) { return isReachedBy(lines[line]); }) > 1;
}

bool RightEdge::isReachedBy(PlacedLine const& line) const {
    auto const slack = isWindows ? 8 : 12; // tenths of a letter's height
    return 10 * (furthest - line.box.right()) <= slack * line.letterHeight;
}

bool wraps(PlacedLine const& above, PlacedLine const& below, RightEdge const& edge) {
    auto const &a = above.box, &b = below.box;
    auto const height = std::max(above.letterHeight, below.letterHeight);
    bool const isNear = b.x <= a.x + height && b.y - a.bottom() <= 2 * height;
    return isNear && mayBeginWithRest(below) && (edge.isReachedBy(above) || endsOpen(above));
}

}
