#include <TavaroVision/Scanning/Private/Misreadings.h>

#include <TavaroCore/Privacy/CardNumbers.h>
#include <TavaroVision/Scanning/Private/MendedText.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace tavaro {

namespace {

constexpr auto none = std::string_view::npos;

/// What keys of services begin with. One letter read in the other case, or as one that looks like it, would hide them.
constexpr std::array<std::string_view, 24> prefixes{
    "sk_live_",    "sk_test_", "rk_live_", "rk_test_", "pk_live_", "pk_test_", "sk-proj-",    "sk-ant-",
    "sk-svcacct-", "ghp_",     "gho_",     "ghs_",     "ghu_",     "ghr_",     "github_pat_", "glpat-",
    "xoxb-",       "xoxp-",    "npm_",     "pypi-",    "whsec_",   "shpat_",   "dop_v1_",     "AKIA"};

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool isLetter(char c) { return (c | 32) >= 'a' && (c | 32) <= 'z'; }
bool isAlphanumeric(char c) { return isDigit(c) || isLetter(c); }
bool isIn(char c, std::string_view set) { return set.find(c) != none; }

char folded(char c) {
    if (isUpper(c)) c = static_cast<char>(c | 32);
    if (c == '1' || c == 'i' || c == '|') return 'l';
    return c == '0' ? 'o' : c;
}

/// The digit that a letter is taken for; the character itself where none is.
char digitOf(char c) {
    constexpr std::string_view letters = "OoQDlI|SsZzBG", digits = "0000111552286";
    auto const at = letters.find(c);
    return at == none ? c : digits[at];
}

struct Piece {
    std::size_t start = 0;
    std::size_t end = 0;
    std::size_t size() const { return end - start; }
};

/// Words between blanks, from the last to the first: what is mended behind one leaves those before it in their places.
std::vector<Piece> wordsFromEnd(std::string_view text) {
    std::vector<Piece> words;
    for (std::size_t at = 0; at < text.size();) {
        auto const start = text.find_first_not_of(' ', at);
        if (start == none) break;
        at = std::min(text.find(' ', start), text.size());
        words.push_back({start, at});
    }
    std::ranges::reverse(words);
    return words;
}

/// `text` with one letter off, all others alike.
bool isNearly(std::string_view text, std::string_view word) {
    if (text.size() != word.size()) return false;
    int wrong = 0;
    for (std::size_t i = 0; i < word.size(); ++i) wrong += folded(text[i]) != folded(word[i]);
    return wrong == 1;
}

/// "Pasaword: x", "Bearor x": long words that hardly anything else is like.
void mendLabelLetters(MendedText& text) {
    constexpr std::array<std::string_view, 5> labels{"password", "passphrase", "passwort", "secret", "bearer"};
    auto const line = text.text();
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (!isLetter(line[at]) || (at > 0 && isAlphanumeric(line[at - 1]))) continue;
        auto end = at;
        while (end < line.size() && isAlphanumeric(line[end])) ++end;
        auto const word = std::string_view(line).substr(at, end - at);
        bool const isFollowed = end < line.size() && isIn(line[end], " :=");
        for (auto const label : labels) {
            if (isFollowed && isNearly(word, label)) text.replace(at, word.size(), label);
        }
        at = end;
    }
}

/// "Bearer9fQ2…", "card4539 1488 …": blanks that were not read between a label and its value.
void mendLabelBlanks(MendedText& text) {
    constexpr std::array<std::string_view, 10> labels{"bearer", "card", "karte", "phone",  "call",
                                                      "tel",    "fax",  "visa",  "mobile", "number"};
    for (auto const word : wordsFromEnd(text.text())) {
        auto const line = std::string_view(text.text()).substr(word.start, word.size());
        for (auto const label : labels) {
            bool const begins = line.size() > label.size() + 3 &&
                                std::ranges::equal(line.substr(0, label.size()), label, {}, folded, folded);
            auto const rest = begins ? line.substr(label.size()) : std::string_view();
            bool const isToken = label == "bearer" && rest.size() >= 16 && std::ranges::any_of(rest, isDigit);
            bool const isNumber =
                !rest.empty() && isIn(rest[0], "+(0123456789") && std::ranges::none_of(rest, isLetter);
            if (isToken || isNumber) text.replace(word.start + label.size(), 0, " ");
        }
    }
}

/// "AWSSECRETACCESSKEY=x": underscores between capitals are often not seen.
void mendLabelJoints(MendedText& text) {
    constexpr std::array<std::string_view, 10> labels{"SECRETACCESSKEY", "ACCESSKEY",  "SECRETKEY", "PRIVATEKEY",
                                                      "APIKEY",          "AUTHKEY",    "TOKEN",     "SECRET",
                                                      "PASSWORD",        "CREDENTIALS"};
    for (auto const word : wordsFromEnd(text.text())) {
        auto const sign = text.text().find_first_of("=:", word.start);
        if (sign >= word.end || sign == word.start) continue;
        auto const name = std::string_view(text.text()).substr(word.start, sign - word.start);
        if (!std::ranges::all_of(name, [](char c) { return isUpper(c) || isDigit(c) || c == '_'; })) continue;
        for (auto const label : labels) {
            if (!name.ends_with(label) || name.size() == label.size()) continue;
            auto const at = word.start + name.size() - label.size();
            if (text.text()[at - 1] != '_') text.replace(at, 0, "_");
            break;
        }
    }
}

/// "Password; x", "API key. x", "Passwort· x": signs that a colon is taken for, behind what a label ends with.
void mendColons(MendedText& text) {
    constexpr std::array<std::string_view, 9> labels{"password", "passwort", "passphrase", "secret", "token",
                                                     "key",      "kennwort", "passcode",   "pin"};
    constexpr std::array<std::string_view, 6> signs{";", ".", ",", "·", "»", "‘"};
    auto const isLabelBefore = [&](std::size_t end) {
        std::string before(text.text().substr(end - std::min(end, std::size_t{12}), std::min(end, std::size_t{12})));
        std::ranges::transform(before, before.begin(), folded);
        return std::ranges::any_of(labels, [&](std::string_view label) {
            std::string wanted(label);
            std::ranges::transform(wanted, wanted.begin(), folded);
            return before.ends_with(wanted);
        });
    };
    for (auto const sign : signs) {
        for (auto at = text.text().find(sign); at != none; at = text.text().find(sign, at + 1)) {
            auto const next = at + sign.size();
            bool const isBetween = next + 1 < text.text().size() && text.text()[next] == ' ' && at > 0;
            auto const end = isBetween && text.text()[at - 1] == ' ' ? at - 1 : at;
            if (!isBetween || !isLabelBefore(end)) continue;
            auto const value = text.text().substr(next + 1, text.text().find(' ', next + 1) - next - 1);
            bool const isMixed = std::ranges::any_of(value, isDigit) && std::ranges::any_of(value, isLetter);
            if (isMixed && value.size() >= 6) text.replace(at, sign.size(), ":");
        }
    }
}

/// "Password:W inter#77": a letter on the wrong side of the blank behind a label.
void mendMovedBlanks(MendedText& text) {
    constexpr std::size_t shortestLabel = 3, mostLetters = 2;
    for (auto const word : wordsFromEnd(text.text())) {
        auto const line = std::string_view(text.text());
        auto const sign = line.substr(0, word.end).find_last_of(":=");
        bool const isLabel = sign != none && sign >= word.start + shortestLabel && isLetter(line[sign - 1]);
        if (!isLabel || word.end - sign - 1 > mostLetters || sign + 1 == word.end || word.end == line.size()) continue;
        if (!std::ranges::all_of(line.substr(sign + 1, word.end - sign - 1), isAlphanumeric)) continue;
        text.replace(word.end, 1, "");
        text.replace(sign + 1, 0, " ");
    }
}

/// "Bearer 9{Q2kLx81m…": signs that a letter is taken for, in a token that only its label tells of.
void mendTokenSigns(MendedText& text) {
    constexpr std::string_view label = "bearer ", signs = "{}()[]|!", letters = "fJCJlJll";
    constexpr std::size_t shortest = 16;
    auto const line = text.text();
    for (auto const word : wordsFromEnd(line)) {
        bool const isToken = word.start >= label.size() && word.size() >= shortest &&
                             std::ranges::equal(std::string_view(line).substr(word.start - label.size(), label.size()),
                                                label, {}, folded, folded);
        if (!isToken) continue;
        for (auto at = word.start; at + 1 < word.end; ++at) {
            auto const sign = signs.find(line[at]);
            if (sign != none) text.replace(at, 1, letters.substr(sign, 1));
        }
    }
}

/// "postgres:/shop:…@db", "postgres:l/shop:…@db"
void mendSchemes(MendedText& text) {
    constexpr std::array<std::string_view, 12> schemes{"postgres", "postgresql", "mysql", "mariadb", "mongodb", "redis",
                                                       "amqp",     "https",      "http",  "ftp",     "sftp",    "smtp"};
    for (auto const word : wordsFromEnd(text.text())) {
        auto const line = std::string_view(text.text());
        auto const colon = line.find(':', word.start), at = line.find('@', word.start);
        if (colon >= word.end || at >= word.end || at < colon) continue;
        auto const name = line.substr(word.start, colon - word.start);
        bool const isScheme = std::ranges::any_of(schemes, [&](auto scheme) { return name.ends_with(scheme); });
        auto end = colon + 1;
        while (end < colon + 3 && isIn(line[end], "/\\lI|1")) ++end;
        bool const hasSlash = line.substr(colon, end - colon).find('/') != none;
        if (isScheme && hasSlash && line.find(':', end) < at) text.replace(colon + 1, end - colon - 1, "//");
    }
}

constexpr std::array<std::string_view, 13> domains{"com", "org", "net", "de", "io",  "eu",  "fr",
                                                   "uk",  "nl",  "ch",  "at", "dev", "info"};

/// "maria(a)mail.com", "maria©mail.com": what the sign of mail addresses is taken for between a name and a domain.
void mendMailSigns(MendedText& text) {
    constexpr std::array<std::string_view, 8> signs{"(a)", "(@)", "(a", "(@", "[@]", "[@", "©", "®"};
    for (auto const word : wordsFromEnd(text.text())) {
        auto const line = std::string_view(text.text()).substr(word.start, word.size());
        for (auto const sign : signs) {
            auto const at = line.find(sign);
            if (at == none || at < 2) continue;
            auto const domain = line.substr(at + sign.size());
            auto const dot = domain.rfind('.');
            auto const ending = dot == none ? std::string_view() : domain.substr(dot + 1);
            bool const isDomain = dot != none && dot > 0 && std::ranges::find(domains, ending) != domains.end();
            if (!isDomain || !isAlphanumeric(line[at - 1]) || !isAlphanumeric(domain[0])) continue;
            text.replace(word.start + at, sign.size(), "@");
            break;
        }
    }
}

/// "maria@mail,com", "maria@mailcom": the dot before the domain's end.
void mendMailDots(MendedText& text) {
    constexpr std::size_t shortestName = 3;
    for (auto const word : wordsFromEnd(text.text())) {
        auto const line = std::string_view(text.text()).substr(word.start, word.size());
        auto const at = line.find('@');
        if (at == none || at < 2 || !isAlphanumeric(line[at - 1])) continue;
        auto const domain = line.substr(at + 1);
        auto end = domain.size();
        while (end > 0 && !isAlphanumeric(domain[end - 1])) --end;
        auto const comma = domain.substr(0, end).find(',');
        if (comma != none && std::ranges::find(domains, domain.substr(comma + 1, end - comma - 1)) != domains.end()) {
            text.replace(word.start + at + 1 + comma, 1, ".");
        } else if (domain.find_first_of(".,") == none && std::ranges::all_of(domain.substr(0, end), isAlphanumeric)) {
            for (std::string_view const ending : {"com", "org", "net"}) {
                if (!domain.substr(0, end).ends_with(ending) || end < ending.size() + shortestName) continue;
                text.replace(word.start + at + 1 + end - ending.size(), 0, ".");
            }
        }
    }
}

/// "-----BEGlN PR1VATE KEV-----", "_____BEGIN RSA PRIVATEKEY": each word with one letter off, whatever the dashes are.
void mendKeyFiles(MendedText& text) {
    auto const line = text.text();
    std::string_view const rest = line;
    constexpr std::string_view first = "BEGIN", kind = "PRIVATE", last = "KEY";
    auto const find = [&](std::string_view word, std::size_t from) {
        for (auto at = from; at + word.size() <= rest.size(); ++at) {
            auto const part = rest.substr(at, word.size());
            if (isNearly(part, word) || std::ranges::equal(part, word, {}, folded, folded)) return at;
        }
        return none;
    };
    auto const begin = find(first, 0);
    if (begin == none || begin < 2 || begin > 16) return;
    auto const isDash = [](char c) { return !isAlphanumeric(c) && c != ' '; };
    if (!isDash(rest[begin - 1]) || !isDash(rest[begin - 2])) return;
    auto const middle = find(kind, begin + first.size());
    if (middle == none || middle > begin + 20) return;
    auto const end = find(last, middle + kind.size());
    if (end == none || end > middle + kind.size() + 2) return;
    constexpr std::ptrdiff_t mostSmall = 3; // letters: an l for an I
    auto const name = rest.substr(begin, end + last.size() - begin);
    if (std::ranges::count_if(name, [](char c) { return isLetter(c) && !isUpper(c); }) > mostSmall) return;
    text.replace(middle, end + last.size() - middle, "PRIVATE KEY");
    text.replace(begin, first.size(), first);
    auto const start = rest.find_last_of(' ', begin) == none ? 0 : rest.find_last_of(' ', begin) + 1;
    text.replace(start, begin - start, "-----");
}

bool isOfNumber(char c) { return isDigit(digitOf(c)) || isIn(c, "()+-. /"); }

/// Runs of digits, of what is taken for them, and of what is between groups; from the last to the first.
std::vector<Piece> numbersFromEnd(std::string_view text) {
    constexpr std::size_t fewestDigits = 7;
    std::vector<Piece> numbers;
    for (std::size_t at = 0; at < text.size(); ++at) {
        bool const begins = (isDigit(digitOf(text[at])) || isIn(text[at], "(+")) &&
                            (at == 0 || !isAlphanumeric(text[at - 1]) || text[at] == '(');
        if (!begins) continue;
        auto end = at;
        while (end < text.size() && (isOfNumber(text[end]) || (isIn(text[end], "\\~") && end > at))) ++end;
        if (end < text.size() && isAlphanumeric(text[end])) { // the last group is of a word
            while (end > at && text[end - 1] != ' ') --end;
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
        if (isGap ? !isIn(number[i], " -") : !isDigit(number[i])) return false;
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
    std::ranges::transform(text, text.begin(), [](char c) { return isUpper(c) ? static_cast<char>(c | 32) : c; });
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
        if (rest[i] == '#' ? !isDigit(number[first + i]) : !isIn(number[first + i], "- ")) return number;
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

void mendNumber(MendedText& text, Piece const& place) {
    auto number = text.text().substr(place.start, place.size());
    for (auto& c : number) c = isIn(c, "\\~") ? ' ' : digitOf(c);
    mendCard(number, std::string_view(text.text()).substr(0, place.start));
    text.replace(place.start, place.size(), withWholeArea(std::move(number)));
}

/// "(2l2) 555-O199", "is(415) 555-4845", "+44\20 1208 5007", cards of which one digit was misread.
void mendNumbers(MendedText& text) {
    for (auto const place : numbersFromEnd(text.text())) {
        mendNumber(text, place);
        bool const isGlued =
            place.start > 0 && text.text()[place.start] == '(' && isLetter(text.text()[place.start - 1]);
        if (isGlued) text.replace(place.start, 0, " ");
    }
}

}

void mendPrefixes(MendedText& text) {
    for (auto const prefix : prefixes) {
        auto const isPrefix = [](char a, char b) { return folded(a) == folded(b); };
        auto const line = text.text();
        for (auto at = line.begin(); at != line.end(); ++at) {
            at = std::search(at, line.end(), prefix.begin(), prefix.end(), isPrefix);
            if (at == line.end()) break;
            if (at == line.begin() || !isAlphanumeric(at[-1]))
                text.replace(static_cast<std::size_t>(at - line.begin()), prefix.size(), prefix);
        }
    }
}

void mendMisreadings(MendedText& text) {
    mendKeyFiles(text);
    mendLabelLetters(text);
    mendLabelJoints(text);
    mendLabelBlanks(text);
    mendMovedBlanks(text);
    mendTokenSigns(text);
    mendColons(text);
    mendSchemes(text);
    mendMailSigns(text);
    mendMailDots(text);
    mendNumbers(text);
}

}
