#include <TavaroVision/Scanning/Private/MisreadNumbers.h>

#include <TavaroCore/Privacy/CardNumbers.h>
#include <TavaroVision/Scanning/Private/MendedText.h>
#include <TavaroVision/Scanning/Private/ReadPieces.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

constexpr auto none = std::string_view::npos;

/// The digit that a letter is taken for; the character itself where none is.
char digitOf(char c) {
    constexpr std::string_view letters = "OoQDlI|SsZzBG", digits = "0000111552286";
    auto const at = letters.find(c);
    return at == none ? c : digits[at];
}

bool isOfNumber(char c) { return isDigit(digitOf(c)) || isAnyOf(c, "()+-. /"); }

constexpr std::ptrdiff_t wholeNumber = 10; // digits, with those of its country

/// "+49 30 1208 5007today": where a number with its country ends that goes on in a word; 0 where it may be less.
std::size_t endOfWholeNumber(std::string_view text) {
    bool const isWhole = text[0] == '+' && std::ranges::count_if(text, isDigit) >= wholeNumber;
    return isWhole ? text.find_last_of("0123456789") + 1 : 0;
}

/// "#49 30 1208 5007": a plus that was misread.
bool isCountryAt(std::string_view text, std::size_t at) {
    constexpr std::size_t mostDigits = 3;
    auto const end = std::min(text.find_first_not_of("0123456789", at + 1), text.size());
    bool const isCode = text[at] == '#' && end > at + 1 && end <= at + 1 + mostDigits && end < text.size();
    return isCode && text[end] == ' ' && isDigit(text[std::min(end + 1, text.size() - 1)]);
}

/// Runs of digits, of what is taken for them, and of what is between groups; from the last to the first.
std::vector<ReadPiece> numbersFromEnd(std::string_view text) {
    constexpr std::size_t fewestDigits = 7;
    std::vector<ReadPiece> numbers;
    for (std::size_t at = 0; at < text.size(); ++at) {
        bool const begins = (isDigit(digitOf(text[at])) || isAnyOf(text[at], "(+") || isCountryAt(text, at)) &&
                            (at == 0 || !isAlphanumeric(text[at - 1]) || text[at] == '(');
        if (!begins) continue;
        auto end = text[at] == '#' ? at + 1 : at;
        while (end < text.size() && (isOfNumber(text[end]) || (isAnyOf(text[end], "\\~") && end > at))) ++end;
        if (end < text.size() && isAlphanumeric(text[end])) { // the last group is of a word
            auto const lastDigit = endOfWholeNumber(text.substr(at, end - at));
            while (end > at && text[end - 1] != ' ') --end;
            if (lastDigit > 0) end = at + lastDigit;
        }
        while (end > at && !isDigit(digitOf(text[end - 1]))) --end;
        auto const part = text.substr(at, end - at);
        auto const digits = std::ranges::count_if(part, isDigit), letters = std::ranges::count_if(part, isLetter);
        if (digits >= static_cast<std::ptrdiff_t>(fewestDigits) && letters * 3 <= digits) numbers.push_back({at, end});
        at = std::max(at, end);
    }
    std::ranges::reverse(numbers);
    return numbers;
}

/// The number with its last digit, and the first where no issuer has it, so that it could be a card's.
std::string anyCard(std::string number) {
    auto const first = number.front();
    for (char const issuer : {first, '4'}) {
        number.front() = issuer;
        for (char last = '0'; last <= '9'; ++last) {
            number.back() = last;
            if (isCardNumber(number)) return number;
        }
    }
    return {};
}

/// The first number with one digit another that could be a card's, where letters and digits that look alike may be read
/// for each other.
std::string likelyCard(std::string number) {
    constexpr std::string_view digits = "0123456789";
    constexpr std::array<std::string_view, 10> alike{"869", "74", "7", "85", "19", "683", "850", "12", "3690", "480"};
    if (isCardNumber(number)) return number;
    for (auto& c : number) {
        auto const read = c;
        if (!isDigit(read)) continue;
        for (char const other : alike[digits.find(read)]) {
            c = other;
            if (isCardNumber(number)) return number;
        }
        c = read;
    }
    return {};
}

bool hasGroupsOfFour(std::string_view number) {
    constexpr std::size_t length = 19, group = 5;
    if (number.size() != length) return false;
    for (std::size_t i = 0; i < length; ++i) {
        bool const isGap = i % group == group - 1;
        if (isGap ? !isAnyOf(number[i], " -") : !isDigit(number[i])) return false;
    }
    return number[4] == number[9] && number[9] == number[14];
}

/// Sixteen digits of which blanks were dropped or moved, as four groups.
std::string inGroupsOfFour(std::string_view number) {
    std::string result;
    for (char const c : number) {
        if (!isDigit(c)) continue;
        if (result.size() % 5 == 4) result += ' ';
        result += c;
    }
    return result;
}

bool isBehindCardLabel(std::string_view before) {
    std::string text(before.substr(before.size() - std::min(before.size(), std::size_t{30})));
    std::ranges::transform(text, text.begin(), lower);
    return std::ranges::any_of(std::array{"card", "karte", "carte", "tarjeta", "visa", "master"},
                               [&](std::string_view label) { return text.find(label) != none; });
}

/// "(6) 555-3163": digits of the area were not read.
std::string withWholeArea(std::string number) {
    constexpr std::string_view rest = "### ####";
    auto const close = number.find(')');
    if (number[0] != '(' || close == none || close < 2 || close > 3) return number;
    auto const first = std::min(number.find_first_not_of(' ', close + 1), number.size());
    if (number.size() - first != rest.size()) return number;
    for (std::size_t i = 0; i < rest.size(); ++i) {
        if (rest[i] == '#' ? !isDigit(number[first + i]) : !isAnyOf(number[first + i], "- ")) return number;
    }
    return number.insert(close, 4 - close, '0');
}

/// With another digit where it has the groups of a card's number and no check digit.
void mendCard(std::string& number, std::string_view before) {
    constexpr std::size_t length = 19;
    auto const head = number.substr(0, length);
    bool const isWhole = number.size() <= length || !isDigit(number[length]);
    bool const isEven = isWhole && hasGroupsOfFour(head);
    auto const grouped = inGroupsOfFour(number);
    if (!isEven && !(isBehindCardLabel(before) && hasGroupsOfFour(grouped))) return;
    auto card = likelyCard(isEven ? head : grouped);
    if (card.empty() && isBehindCardLabel(before)) card = anyCard(isEven ? head : grouped);
    if (!card.empty()) number = isEven ? card + number.substr(head.size()) : card;
}

void mendNumber(MendedText& text, ReadPiece const& place) {
    auto number = text.text().substr(place.start, place.size());
    for (auto& c : number) c = isAnyOf(c, "\\~") ? ' ' : digitOf(c);
    if (number[0] == '#' && std::ranges::count_if(number, isDigit) >= wholeNumber) number[0] = '+';
    mendCard(number, std::string_view(text.text()).substr(0, place.start));
    text.replace(place.start, place.size(), withWholeArea(std::move(number)));
}

}

void mendNumbers(MendedText& text) {
    for (auto const place : numbersFromEnd(text.text())) {
        if (place.end < text.text().size() && isLetter(text.text()[place.end])) text.replace(place.end, 0, " ");
        mendNumber(text, place);
        bool const isGlued =
            place.start > 0 && text.text()[place.start] == '(' && isLetter(text.text()[place.start - 1]);
        if (isGlued) text.replace(place.start, 0, " ");
    }
}

}
