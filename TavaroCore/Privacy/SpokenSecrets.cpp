#include <TavaroCore/Privacy/Private/SpokenSecrets.h>

#include <TavaroCore/Privacy/Characters.h>

#include <algorithm>
#include <string>

namespace tavaro {

namespace {

constexpr auto none = std::string_view::npos;

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

/// "482913 is your code", "G-482 913 is your verification code": where the code begins, before `end`; `end` if nowhere.
std::size_t startOfCode(std::string_view text, std::size_t end) {
    constexpr std::ptrdiff_t fewest = 4, most = 8; // digits
    auto start = end;
    while (start > 0 && (isDigit(text[start - 1]) || (isAnyOf(text[start - 1], " -") && end - start == 3))) --start;
    while (start < end && !isDigit(text[start])) ++start;
    auto const digits = std::count_if(text.begin() + static_cast<std::ptrdiff_t>(start),
                                      text.begin() + static_cast<std::ptrdiff_t>(end), isDigit);
    bool const isAlone = start == 0 || isAnyOf(text[start - 1], " -:([\"'");
    return isAlone && digits >= fewest && digits <= most ? start : end;
}

void findCodes(std::string_view text, std::function<void(std::size_t, std::size_t)> const& found) {
    constexpr std::size_t furthest = 40; // bytes to the word that says what it is
    auto const line = lowered(text);
    for (std::string_view const phrase : {" is your ", " ist ihr ", " ist dein "}) {
        auto const at = line.find(phrase);
        if (at == none) continue;
        auto const rest = line.substr(at + phrase.size(), furthest);
        bool const isCode = rest.find("code") != none || rest.find("pin") != none || rest.find("otp") != none;
        if (auto const start = startOfCode(text, at); isCode && start < at) found(start, at);
    }
}

/// As many words as wallets have (BIP 39) behind a word that says so.
void findSeeds(std::string_view text, std::function<void(std::size_t, std::size_t)> const& found) {
    constexpr std::size_t fewest = 12, most = 24, shortestWord = 3, longestWord = 8;
    auto const line = lowered(text);
    for (std::string_view const label : {"seed:", "seed =", "seed=", "wallet:", "mnemonic:", "words:"}) {
        auto const at = line.find(label);
        if (at == none) continue;
        auto const start = line.find_first_not_of(" \"'", at + label.size());
        if (start == none) continue;
        std::size_t words = 0, end = start;
        for (auto next = start; next < text.size() && isLower(text[next]);) {
            auto last = next;
            while (last < text.size() && isLower(text[last])) ++last;
            if (last - next < shortestWord || last - next > longestWord) break;
            ++words;
            end = last;
            next = pastBlanks(text, last);
        }
        if (words >= fewest && words <= most && words % 3 == 0) found(start, end);
    }
}

/// "8FKQ2-LM7ZP", "4f8a-91bc": short groups of letters and digits, and hyphens.
bool isGrouped(std::string_view word) {
    constexpr std::size_t shortest = 4, longest = 8;
    std::size_t groups = 0, digits = 0;
    for (std::size_t at = 0; at <= word.size(); ++groups) {
        auto const end = std::min(word.find('-', at), word.size());
        auto const group = word.substr(at, end - at);
        if (group.size() < shortest || group.size() > longest ||
            !std::all_of(group.begin(), group.end(), isAlphanumeric))
            return false;
        digits += static_cast<std::size_t>(std::count_if(group.begin(), group.end(), isDigit));
        at = end + 1;
    }
    return groups > 1 && digits > 1;
}

/// "Recovery code 8FKQ2-LM7ZP", "Backup codes: 4f8a-91bc 77de-20ac": all that follow.
void findRecoveryCodes(std::string_view text, std::function<void(std::size_t, std::size_t)> const& found) {
    auto const line = lowered(text);
    for (std::string_view const label : {"recovery code", "backup code", "wiederherstellungscode", "code de secours"}) {
        auto const at = line.find(label);
        if (at == none) continue;
        for (auto start = at + label.size(); start < text.size();) {
            auto const end = std::min(text.find_first_of(" ,;", start), text.size());
            if (isGrouped(text.substr(start, end - start))) found(start, end);
            start = end + 1;
        }
    }
}

/// "Set-Cookie: session=s%3A9fQ2…; HttpOnly": what keeps somebody logged in.
void findCookies(std::string_view text, std::function<void(std::size_t, std::size_t)> const& found) {
    constexpr std::size_t shortest = 16;
    auto const line = lowered(text);
    auto const header = line.find("cookie: ");
    if (header == none) return;
    for (auto start = header + 8; start < text.size();) {
        auto const end = std::min(text.find(';', start), text.size());
        auto const sign = text.find('=', start);
        auto const name = std::string_view(line).substr(start, std::min(sign, end) - start);
        bool const isSession = name.find("sess") != none || name.find("sid") != none || name.find("auth") != none ||
                               name.find("token") != none || name.find("jwt") != none;
        if (sign < end && isSession && end - sign > shortest && text.substr(sign, end - sign).find(' ') == none)
            found(sign + 1, end);
        start = pastBlanks(text, end + 1);
    }
}

}

void forEachSpokenSecret(std::string_view text, std::function<void(std::size_t, std::size_t)> const& found) {
    findCodes(text, found);
    findSeeds(text, found);
    findRecoveryCodes(text, found);
    findCookies(text, found);
}

}
