#include <TavaroCore/Privacy/Private/PhoneNumbers.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroCore/Privacy/Private/SensitiveText.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <string>
#include <unordered_set>
#include <vector>

namespace tavaro {

namespace {

constexpr std::size_t shortest = 7, longest = 15; // digits

/// E.164: the countries' codes of one and two digits; the rest of the first two have three.
bool hasCountryCode(std::string_view digits) {
    if (digits[0] == '1' || digits[0] == '7') return true;
    constexpr std::array<int, 40> ofTwo{20, 27, 30, 31, 32, 33, 34, 36, 39, 40, 41, 43, 44, 45, 46, 47, 48, 49, 51, 52,
                                        53, 54, 55, 56, 57, 58, 60, 61, 62, 63, 64, 65, 66, 81, 82, 84, 86, 90, 91, 92};
    constexpr std::array<int, 14> beginningsOfThree{21, 22, 23, 24, 25, 26, 29, 35, 37, 38, 42, 50, 59, 67};
    constexpr std::array<int, 11> more{68, 80, 85, 87, 88, 93, 94, 95, 96, 97, 98};
    int const two = (digits[0] - '0') * 10 + digits[1] - '0';
    auto const isIn = [&](auto const& list) { return std::find(list.begin(), list.end(), two) != list.end(); };
    return isIn(ofTwo) || isIn(beginningsOfThree) || isIn(more) || two == 99;
}

constexpr std::string_view labels[] = {
    "call",     "cell",           "cellulare",    "celular",       "fax",      "gsm",       "handy",
    "handynr",  "handynummer",    "komorka",      "komórka",       "mobil",    "mobile",    "mobilnummer",
    "móvil",    "movil",          "mobiltelefon", "numéro",        "phone",    "phone no",  "phone number",
    "portable", "puhelin",        "rückruf",      "ruf",           "sms",      "tel",       "telefax",
    "telefon",  "telefone",       "telefoni",     "telefonnummer", "telefono", "teléfono",  "telefonu",
    "telefoon", "telefoonnummer", "telephone",    "tfn",           "tlf",      "tél",       "téléphone",
    "whatsapp", "мобильный",      "телефон",      "тел",           "hotline",  "toll free", "mobilní",
    "τηλέφωνο", "numer",          "phonenumber"};
constexpr std::string_view eastAsianLabels[] = {"電話", "电话",   "手机",     "手機", "携帯",
                                                "전화", "휴대폰", "联系方式", "传真"};

struct Labels {
    std::unordered_set<std::string> known;
    Labels() {
        for (auto const label : labels) known.insert(SensitiveText::foldLookAlikes(label));
    }
};

bool isLabel(std::string_view words) {
    static Labels const labels;
    if (words.empty()) return false;
    bool const isEastAsian = std::any_of(std::begin(eastAsianLabels), std::end(eastAsianLabels),
                                         [&](auto label) { return words.find(label) != words.npos; });
    if (isEastAsian) return true;
    auto folded = SensitiveText::foldLookAlikes(words);
    if (labels.known.contains(folded)) return true;
    auto const blank = folded.rfind(' ');
    return blank != folded.npos && labels.known.contains(folded.substr(blank + 1));
}

/// "Tel. 5557 0199", `"phone": "…"`, "Handynummer | …": the words before the number, with at most four signs between.
bool hasLabel(std::string_view before) {
    constexpr std::size_t mostBetween = 6;
    auto const isOfWord = [](char c) { return isLetter(c) || isBeyondASCII(c); };
    auto end = before.size();
    while (end > 0 && !isOfWord(before[end - 1]) && before.size() - end < mostBetween) --end;
    if (end == 0 || !isOfWord(before[end - 1])) return false;
    if (before.substr(end).find_first_not_of(" \t.:\"'|>=") != before.npos) return false;
    auto start = end;
    int blanks = 0;
    while (start > 0 && (isOfWord(before[start - 1]) || (before[start - 1] == ' ' && ++blanks < 2))) --start;
    auto words = before.substr(start, end - start);
    while (words.starts_with(' ')) words.remove_prefix(1);
    return isLabel(words);
}

/// Digits in groups, and what is between these.
struct Number {
    std::size_t start = 0;
    std::size_t end = 0;
    std::string digits;
    std::vector<std::size_t> groups;
    std::string separators; // between groups
    bool hasPlus = false;
    bool hasArea = false; // in parentheses

    bool isEven() const {
        return separators.find_first_not_of(separators.empty() ? ' ' : separators[0]) == separators.npos;
    }
};

/// As much as can belong together: one sign between groups, but "(0)" and a blank around an area.
Number numberAt(std::string_view text, std::size_t at) {
    Number number{.start = at};
    if (text[at] == '+') {
        number.hasPlus = true;
        ++at;
    }
    while (at < text.size()) {
        auto const separatorStart = at;
        while (at < text.size() && at - separatorStart < 2 && isAnyOf(text[at], " .-/()")) ++at;
        auto const separator = text.substr(separatorStart, at - separatorStart);
        if (separator.size() == 2 && separator != ") " && separator != " (" && separator != ")-") break;
        if (at == text.size() || !isDigit(text[at]) || (number.groups.empty() && separator.size() > 1)) break;
        auto const start = at;
        while (at < text.size() && isDigit(text[at])) ++at;
        if (separator.find('(') != separator.npos) {
            if (at == text.size() || text[at] != ')') break; // "4.17 (2024-02-11)": no area
            number.hasArea = true;
        }
        number.digits += text.substr(start, at - start);
        if (!number.groups.empty()) number.separators += separator[0];
        number.groups.push_back(at - start);
        number.end = at;
        if (number.groups.size() > 1 && separator.empty()) break;
    }
    return number;
}

bool mayPrecede(std::string_view before) {
    if (before.empty()) return true;
    char const c = before.back();
    return !isAlphanumeric(c) && !isAnyOf(c, "_./-+:#@$%&*^~\\") &&
           !((isBlank(c) || c == ',') && before.size() > 1 && isDigit(before[before.size() - 2]));
}

bool mayFollow(std::string_view after) {
    if (after.empty()) return true;
    char const c = after[0];
    if (isAlphanumeric(c) || isAnyOf(c, "_/+:@%*^~\\-")) return false;
    if (isAnyOf(c, ".,") && after.size() > 1 && isAlphanumeric(after[1])) return isLetter(after[1]);
    auto const next = pastBlanks(after, 0);
    return !(isBlank(c) && next < after.size() && isDigit(after[next]));
}

bool areGroups(Number const& number, std::initializer_list<std::size_t> lengths) {
    return std::equal(number.groups.begin(), number.groups.end(), lengths.begin(), lengths.end());
}

/// "415-555-0132", "1-415-555-0132": the parts of a North American number do not begin with 0 or 1.
bool isNorthAmerican(Number const& number) {
    bool const hasOne = areGroups(number, {1, 3, 3, 4}) && number.digits[0] == '1';
    if (!(hasOne || areGroups(number, {3, 3, 4})) || !(number.isEven() || number.hasArea)) return false;
    auto const area = number.digits.substr(hasOne ? 1 : 0);
    return area[0] >= '2' && area[3] >= '2' && number.separators.find('.') == std::string::npos;
}

/// "020 7946 0958", "06 12 34 56 78", "089/5550123": the zero that calls inside most countries begin with.
bool isDomestic(Number const& number) {
    constexpr std::size_t fewest = 9, most = 12; // digits
    auto const& groups = number.groups;
    auto const count = number.digits.size();
    if (number.digits[0] != '0' || number.digits[1] == '0' || count < fewest || count > most) return false;
    if (groups.size() < 2 || groups[0] < 2 || groups[0] > 5) return false;
    if (areGroups(number, {5, 4}) && number.separators == "-") return false;   // a postal code of the United States
    if (areGroups(number, {4, 4, 4}) && number.digits[1] != '1') return false; // German mobile numbers begin with 01
    bool const isPairs = groups.size() == 5 && count == 10;
    if (std::count(groups.begin(), groups.end(), 2u) > 2 && !isPairs) return false;
    auto const rest = number.separators.substr(1);
    bool const isRestEven = rest.find_first_not_of(rest.empty() ? ' ' : rest[0]) == rest.npos;
    return isRestEven && groups.size() <= 5 && groups.back() >= (isPairs ? 2 : 3) &&
           number.separators.find('.') == number.separators.rfind('.');
}

/// "0049 30 90182045": the two zeros that calls abroad begin with in most countries, and a country's code behind them.
bool isCallAbroad(Number const& number) {
    constexpr std::size_t fewest = 11, longestCode = 5; // with both zeros
    auto const& digits = number.digits;
    bool const begins = digits.starts_with("00") && digits.size() >= fewest && digits[2] != '0';
    return begins && number.groups.size() > 2 && number.groups.size() <= 6 && number.groups[0] >= 3 &&
           number.groups[0] <= longestCode && number.isEven() && hasCountryCode(std::string_view(digits).substr(2));
}

bool isPhoneNumber(Number const& number, std::string_view before, std::string_view after) {
    auto const count = number.digits.size();
    if (count < shortest || count > longest) return false;
    bool const isLabelled = hasLabel(before);
    if (!isLabelled && !mayPrecede(before)) return false;
    if (!mayFollow(after)) return false;
    if (number.hasPlus) {
        constexpr std::size_t fewest = 9;
        return count >= fewest && number.digits[0] != '0' && hasCountryCode(number.digits) &&
               (number.groups.size() > 1 || count >= 10) && number.groups.size() <= 6 &&
               (number.groups.size() < 2 || number.separators.find('.') == std::string::npos || number.isEven());
    }
    if (isLabelled) return number.groups.size() <= 6;
    if (number.hasArea) {
        bool const isTen = count == 10 || count == 11 || number.digits[0] == '0';
        auto const closed = number.groups[0] <= 4 && isTen && count >= 9;
        return closed && number.groups.size() <= 5 && number.separators.find('/') == std::string::npos;
    }
    return isNorthAmerican(number) || isDomestic(number) || isCallAbroad(number);
}

}

void forEachPhoneNumber(std::string_view text, std::function<void(std::size_t, std::size_t)> const& found) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const isSign = text[i] == '+' || text[i] == '(';
        if (!isDigit(text[i]) && !(isSign && i + 1 < text.size() && isDigit(text[i + 1]))) continue;
        auto const number = numberAt(text, i);
        if (number.groups.empty()) continue;
        if (isPhoneNumber(number, text.substr(0, i), text.substr(number.end))) found(i, number.end);
        i = std::max(number.end, i + 1) - 1;
    }
}

}
