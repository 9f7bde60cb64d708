#include <TavaroCore/Privacy/CardNumbers.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroCore/Privacy/Private/SensitiveText.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tavaro {

namespace {

/// What an issuer's numbers begin with, from the first to the last, and how long they are.
struct Issuer {
    int first = 0;
    int last = 0;
    std::size_t shortest = 16;
    std::size_t longest = 16;
};

constexpr Issuer issuers[] = {
    {2200, 2204, 16, 19}, // Mir
    {2221, 2720},         // Mastercard
    {300, 305, 14, 19},   // Diners Club
    {34, 34, 15, 15},     // American Express
    {3528, 3589, 16, 19}, // JCB
    {36, 36, 14, 19},     // Diners Club
    {37, 37, 15, 15},     // American Express
    {38, 39, 14, 19},     // Diners Club
    {4, 4, 16, 19},       // Visa
    {5018, 5018},
    {5020, 5020},
    {5038, 5038},
    {5893, 5893},         // Maestro
    {5019, 5019},         // Dankort
    {51, 55},             // Mastercard
    {6011, 6011, 16, 19}, // Discover
    {62, 62, 16, 19},     // UnionPay
    {6304, 6304, 16, 19}, // Maestro
    {644, 649, 16, 19},   // Discover
    {65, 65, 16, 19},     // Discover, RuPay
    {6759, 6759, 16, 19},
    {6761, 6763, 16, 19}, // Maestro
    {81, 82},
    {508, 508},
    {6521, 6522},
    {60, 60},     // RuPay
    {9792, 9792}, // Troy
};

bool hasIssuer(std::string_view digits) {
    return std::any_of(std::begin(issuers), std::end(issuers), [&](Issuer const& issuer) {
        auto const length = std::to_string(issuer.first).size();
        int beginning = 0;
        for (std::size_t i = 0; i < length; ++i) beginning = beginning * 10 + (digits[i] - '0');
        return beginning >= issuer.first && beginning <= issuer.last && digits.size() >= issuer.shortest &&
               digits.size() <= issuer.longest;
    });
}

constexpr std::size_t shortestNumber = 13, longestNumber = 19;

/// What a zero or a one is taken for.
char digitOf(char c) {
    if (c == 'O' || c == 'o') return '0';
    return c == 'l' || c == 'I' || c == '|' ? '1' : c;
}

/// The lengths of groups of digits, where all have the same blank or hyphen between them.
struct Grouping {
    std::vector<std::size_t> lengths;
    bool isEven = true;

    explicit Grouping(std::string_view text) {
        char separator = 0;
        lengths.push_back(0);
        for (char const c : text) {
            if (isDigit(digitOf(c))) {
                ++lengths.back();
                continue;
            }
            isEven &= separator == 0 || c == separator;
            separator = c;
            lengths.push_back(0);
        }
    }

    bool isOfCard() const {
        if (lengths.size() == 1) return true;
        auto const isFour = [](std::size_t length) { return length == 4; };
        bool const isFours = std::all_of(lengths.begin(), lengths.end() - 1, isFour) && lengths.back() <= 4;
        using Lengths = std::vector<std::size_t>;
        return isEven && (isFours || lengths == Lengths{4, 6, 5} || lengths == Lengths{4, 6, 4} ||
                          lengths == Lengths{6, 13} || lengths == Lengths{8, 8});
    }
};

bool mayFollow(std::string_view text, std::size_t end) {
    if (end == text.size()) return true;
    char const c = text[end];
    if (isAlphanumeric(c) || c == '_') return false;
    bool const isPoint = c == '.' || c == '-' || c == ':'; // behind a comma comes the next field of a table
    return !(isPoint && end + 1 < text.size() && isAlphanumeric(text[end + 1]));
}

bool mayPrecede(std::string_view text, std::size_t start) {
    if (start == 0) return true;
    char const c = text[start - 1];
    if (isAlphanumeric(c) || isAnyOf(c, "_.+-#/")) return false;
    if (start < 2 || !isAnyOf(c, " ,:\t")) return true;
    auto const last = start - 2; // in a table of numbers, hexadecimal ones as well
    bool const isAfterHex = last > 1 && isHexDigit(text[last]) && isHexDigit(text[last - 1]) && isDigit(text[last - 2]);
    return !isDigit(text[last]) && !isAfterHex;
}

/// The end of the longest card number from `start` on; `start` when there is none.
std::size_t endOfCard(std::string_view text, std::size_t start) {
    std::size_t digits = 0, best = start, letters = 0;
    for (auto i = start; i < text.size() && digits < longestNumber; ++i) {
        if (isDigit(digitOf(text[i]))) {
            letters += !isDigit(text[i]);
            ++digits;
        } else if (!isAnyOf(text[i], " -") || i == start || !isDigit(digitOf(text[i - 1]))) {
            break;
        }
        constexpr std::size_t mostLetters = 3;
        bool const mayEnd = digits >= shortestNumber && letters <= mostLetters && isDigit(digitOf(text[i]));
        if (mayEnd && mayFollow(text, i + 1) && isCardNumber(text.substr(start, i + 1 - start))) best = i + 1;
    }
    return best;
}

/// What follows a number in a row of numbers is none of these: an expiry date, the three digits on the back.
bool isInRow(std::string_view text, std::size_t end) {
    bool const isTable = end < text.size() && text[end] == ',';
    auto const next = isTable ? end + 1 : pastBlanks(text, end);
    if (next == end || next == text.size() || !isDigit(text[next])) return false;
    auto last = next;
    while (last < text.size() && isDigit(text[last])) ++last;
    if (last < text.size() && isLetter(text[last])) return !isTable; // hexadecimal
    auto const length = last - next;
    bool const isDate = length <= 2 && last < text.size() && isAnyOf(text[last], "/-");
    bool const isEnd = pastBlanks(text, last) == text.size() || (isTable && text[last] == ',');
    bool const isMonthAndYear = length == 4 && text[next] <= '1' && isEnd;
    return !isDate && !isMonthAndYear && length != 3;
}

}

bool isCardNumber(std::string_view text) {
    std::string digits;
    for (char const c : text) {
        if (isDigit(digitOf(c))) digits += digitOf(c);
    }
    if (digits.size() < shortestNumber || digits.size() > longestNumber) return false;
    return hasIssuer(digits) && Grouping(text).isOfCard() && SensitiveText::luhn(digits) &&
           digits.find_first_not_of(digits.back()) != digits.npos;
}

void forEachCardNumber(std::string_view text, std::function<void(std::size_t, std::size_t)> const& found) {
    for (std::size_t i = 0; i + shortestNumber <= text.size(); ++i) {
        if (!isDigit(text[i]) || !mayPrecede(text, i)) continue;
        auto const end = endOfCard(text, i);
        if (end == i || isInRow(text, end)) continue;
        found(i, end);
        i = end - 1;
    }
}

}
