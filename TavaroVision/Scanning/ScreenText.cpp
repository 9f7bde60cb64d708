#include <TavaroVision/Scanning/Private/ScreenText.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroVision/Scanning/Private/MisreadAddresses.h>
#include <TavaroVision/Scanning/Private/Misreadings.h>

#include <algorithm>
#include <cmath>
#include <string_view>

namespace tavaro {

namespace {

constexpr double tightGap = 0.55;              // of a letter's height: no room for a space
constexpr std::string_view joints = "-._:/@="; // inside of values, often read with a space beside them

bool isTokenCharacter(char c) { return isAlphanumeric(c) || isAnyOf(c, "+/=_-.@~:"); }

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

/// About how wide a letter is beside others of a proportional font.
double breadthOf(char c) {
    if (std::string_view("iljI.,:;'|!()[]").find(c) != std::string_view::npos) return 0.5;
    if (std::string_view("ftr1-\"/").find(c) != std::string_view::npos) return 0.7;
    if (std::string_view("mwMW@%").find(c) != std::string_view::npos) return 1.5;
    return c >= 'A' && c <= 'Z' ? 1.2 : 1;
}

bool isBorder(std::string_view word) {
    constexpr std::string_view strokes = "|([{'\"=_-~.";
    return std::ranges::all_of(word, [&](char c) { return c < 0 || strokes.find(c) != strokes.npos; });
}

bool hasSpace(ReadWord const& before, ReadWord const& after, int letterHeight, ReadingStyle::Spaces spaces) {
    if (spaces == ReadingStyle::Spaces::all) return true;
    bool const isTight = after.box.x - before.box.right() < tightGap * letterHeight &&
                         isTokenCharacter(before.text.back()) && isTokenCharacter(after.text.front());
    if (isTight) return false;
    bool const isJoint =
        joints.find(before.text.back()) != joints.npos || joints.find(after.text.front()) != joints.npos;
    return spaces == ReadingStyle::Spaces::whereThereIsRoom || !isJoint;
}

}

ScreenText::ScreenText(std::span<PlacedLine const> lines, std::span<std::size_t const> indices,
                       ReadingStyle const& style) {
    for (auto const line : indices) add(line, lines[line], style);
    if (style.spaces != ReadingStyle::Spaces::all) blankBorders(read_);
    mended_ = MendedText(read_);
    mendPrefixes(mended_);
    if (style.mending == ReadingStyle::Mending::everything) mendMisreadings(mended_);
    if (style.mending == ReadingStyle::Mending::everything && style.spaces == ReadingStyle::Spaces::all)
        partGluedWords(mended_);
}

void ScreenText::add(std::size_t line, PlacedLine const& placed, ReadingStyle const& style) {
    ReadWord const* before = nullptr;
    for (auto const& word : placed.words) {
        if (before ? hasSpace(*before, word, placed.letterHeight, style.spaces)
                   : !read_.empty() && style.wraps == ReadingStyle::Wraps::atSpaces)
            read_ += ' ';
        words_.push_back({line, &word, read_.size()});
        read_ += word.text;
        before = &word;
    }
}

/// The edges of fields are read as strokes, before all words or as words of their own, apart from others: then a value
/// follows.
void ScreenText::blankBorders(std::string& text) const {
    for (auto const& word : words_) {
        bool const isFirst = &word == words_.data();
        auto const size = word.read->text.size(), end = word.start + size;
        bool const isApart = (isFirst || text[word.start - 1] == ' ') && (end == text.size() || text[end] == ' ');
        if (isApart && isBorder(word.read->text)) {
            text.replace(word.start, size, size, ' ');
            if (!isFirst) text[word.start] = ':';
        } else if (isFirst) {
            for (std::string_view const border : {"|", "(", "[", "‘", "'"}) {
                if (word.read->text.starts_with(border)) text.replace(0, border.size(), border.size(), ' ');
            }
        }
    }
}

std::size_t ScreenText::wordEnd(std::size_t end) const {
    auto const& text = mended_.text();
    if (end >= text.size() || end == 0 || text[end] == ' ') return end;
    constexpr std::string_view closing = "\"'`,;&<>()[]{}@/\\";
    if (closing.find(text[end]) != closing.npos) return end;
    return std::min(text.find(' ', end), text.size());
}

std::size_t ScreenText::wordStart(std::size_t start) const {
    auto const& text = mended_.text();
    constexpr std::string_view opening = " \"'`,;:=<>()[]{}@/\\|";
    while (start > 0 && opening.find(text[start - 1]) == opening.npos) --start;
    return start;
}

bool ScreenText::isSentence(std::size_t start, std::size_t end) const {
    constexpr int fewestWithNumbers = 3; // words
    if (std::string_view(mended_.text()).substr(start, end - start).find(' ') != std::string_view::npos) return false;
    auto const first = mended_.origin(start), last = mended_.origin(end);
    int words = 0, numbers = 0;
    for (auto const& word : words_) {
        auto const from = std::max(first, word.start), to = std::min(last, word.start + word.read->text.size());
        if (from >= to) continue;
        auto const text = std::string_view(read_).substr(from, to - from);
        bool const isNumber = std::ranges::all_of(text, isDigit);
        if (!isNumber && !std::all_of(text.begin() + 1, text.end(), isLower)) return false;
        ++words;
        numbers += isNumber;
    }
    return words > 1 && (numbers == 0 || words >= fewestWithNumbers);
}

std::vector<ScreenText::Place> ScreenText::placesOf(std::size_t start, std::size_t end) const {
    auto const first = mended_.origin(start), last = mended_.origin(end);
    std::vector<Place> places;
    for (auto const& word : words_) {
        auto const wordEnd = word.start + word.read->text.size();
        if (wordEnd <= first || word.start >= last) continue;
        if (places.empty() || places.back().line != word.line)
            places.push_back(
                {.line = word.line, .left = edge(word, std::max(first, word.start) - word.start, Side::left)});
        places.back().right = edge(word, std::min(last, wordEnd) - word.start, Side::right);
    }
    if (places.size() == 1) places[0].text = mended_.text().substr(start, end - start);
    for (auto& place : places) {
        if (!place.text.empty()) continue;
        for (auto const& word : words_) {
            auto const from = std::max(first, word.start), to = std::min(last, word.start + word.read->text.size());
            if (word.line == place.line && from < to) place.text += read_.substr(from, to - from);
        }
    }
    return places;
}

/// Where a letter begins or ends: as if all were of one width, or as they are in other fonts, whichever is further out.
int ScreenText::edge(Word const& placed, std::size_t bytes, Side side) const {
    auto const& word = *placed.read;
    bytes = std::min(bytes, word.text.size());
    if (bytes == 0) return word.box.x;
    if (bytes == word.text.size()) return word.box.right();
    double even = 0, evenAll = 0, uneven = 0, unevenAll = 0;
    for (std::size_t i = 0; i < word.text.size(); ++i) {
        if (isContinuation(word.text[i])) continue;
        auto const breadth = breadthOf(word.text[i]);
        even += i < bytes ? 1 : 0;
        uneven += i < bytes ? breadth : 0;
        evenAll += 1;
        unevenAll += breadth;
    }
    auto const a = even / evenAll, b = uneven / unevenAll;
    auto const part = side == Side::left ? std::min(a, b) : std::max(a, b);
    return word.box.x + static_cast<int>(std::lround(part * word.box.width));
}

}
