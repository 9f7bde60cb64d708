#include <TavaroVision/Scanning/Private/MisreadLabels.h>

#include <TavaroVision/Scanning/Private/MendedText.h>
#include <TavaroVision/Scanning/Private/ReadPieces.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace tavaro {

namespace {

constexpr auto none = std::string_view::npos;

/// "Pasaword: x", "Bearor x": long words that hardly anything else is like.
void mendLabelLetters(MendedText& text) {
    constexpr std::array<std::string_view, 5> labels{"password", "passphrase", "passwort", "secret", "bearer"};
    auto const line = text.text();
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (!isLetter(line[at]) || (at > 0 && isAlphanumeric(line[at - 1]))) continue;
        auto end = at;
        while (end < line.size() && isAlphanumeric(line[end])) ++end;
        auto const word = std::string_view(line).substr(at, end - at);
        bool const isFollowed = end < line.size() && isAnyOf(line[end], " :=");
        for (auto const label : labels) {
            if (isFollowed && isNearly(word, label)) text.replace(at, word.size(), label);
        }
        at = end;
    }
}

/// "+4930 1208 5007today": the beginning of a text is a number, whatever follows it.
bool beginsWithNumber(std::string_view text) {
    constexpr std::size_t fewestBeforeLetters = 9; // digits
    auto const end = std::min(text.find_first_not_of("+()-./0123456789"), text.size());
    auto const digits = static_cast<std::size_t>(std::ranges::count_if(text.substr(0, end), isDigit));
    bool const isAlone = std::ranges::none_of(text, isLetter);
    return !text.empty() && isAnyOf(text[0], "+(0123456789") && (isAlone || digits >= fewestBeforeLetters);
}

/// "Bearer9fQ2…", "Authorization:Bearer9fQ2…", "card4539 1488 …": blanks that were not read between a label and its
/// value.
void mendLabelBlanks(MendedText& text) {
    constexpr std::string_view bearer = "bearer";
    constexpr std::array<std::string_view, 10> labels{bearer, "card", "karte", "phone",  "call",
                                                      "tel",  "fax",  "visa",  "mobile", "number"};
    for (auto const word : wordsFromEnd(text.text())) {
        auto const line = std::string_view(text.text()).substr(word.start, word.size());
        auto const sign = line.find(':');
        auto const begin = sign == none || line.substr(sign).size() <= bearer.size() ? 0 : sign + 1;
        for (auto const label : labels) {
            auto const from = label == bearer ? begin : 0;
            bool const begins =
                line.size() > from + label.size() + 3 && isAlike(line.substr(from, label.size()), label);
            auto const rest = begins ? line.substr(from + label.size()) : std::string_view();
            bool const isToken = label == bearer && rest.size() >= 16 && std::ranges::any_of(rest, isDigit);
            if (isToken || beginsWithNumber(rest)) text.replace(word.start + from + label.size(), 0, " ");
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

/// "Password: Harbor vitp303": an underscore that was read as a blank.
void mendPasswordJoints(MendedText& text) {
    constexpr std::array<std::string_view, 4> labels{"password", "passwort", "passphrase", "kennwort"};
    constexpr std::size_t shortest = 3, shortestNumbered = 4;
    auto const words = wordsFromEnd(text.text());
    if (words.size() < 3) return;
    auto const piece = [&](std::size_t fromEnd) {
        return std::string_view(text.text()).substr(words[fromEnd].start, words[fromEnd].size());
    };
    auto const label = piece(2), first = piece(1), second = piece(0);
    bool const isLabel = isAnyOf(label.back(), ":=") && std::ranges::any_of(labels, [&](std::string_view each) {
                             return label.size() > each.size() &&
                                    isAlike(label.substr(label.size() - each.size() - 1, each.size()), each);
                         });
    bool const isName = first.size() >= shortest && std::ranges::all_of(first, isLetter);
    bool const isNumbered = second.size() >= shortestNumbered && std::ranges::all_of(second, isAlphanumeric) &&
                            isLetter(second.front()) && isDigit(second.back());
    if (isLabel && isName && isNumbered) text.replace(words[0].start - 1, 1, "_");
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

/// "Bearer 9{Q2kLx@1m…": signs that a letter is taken for, in a token that only its label tells of.
void mendTokenSigns(MendedText& text) {
    constexpr std::string_view label = "bearer ", signs = "{}()[]|!@", letters = "fJCJlJll0";
    constexpr std::size_t shortest = 16;
    auto const line = text.text();
    for (auto const word : wordsFromEnd(line)) {
        bool const isToken = word.start >= label.size() && word.size() >= shortest &&
                             isAlike(std::string_view(line).substr(word.start - label.size(), label.size()), label);
        if (!isToken) continue;
        for (auto at = word.start; at + 1 < word.end; ++at) {
            auto const sign = signs.find(line[at]);
            if (sign != none) text.replace(at, 1, letters.substr(sign, 1));
        }
    }
}

}

void mendLabels(MendedText& text) {
    mendLabelLetters(text);
    mendLabelJoints(text);
    mendLabelBlanks(text);
    mendMovedBlanks(text);
    mendTokenSigns(text);
    mendColons(text);
    mendPasswordJoints(text);
}

}
