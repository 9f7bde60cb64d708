#include <TavaroCore/Privacy/Private/SensitiveRules.h>

#include <TavaroCore/Privacy/CardNumbers.h>
#include <TavaroCore/Privacy/Characters.h>
#include <TavaroCore/Privacy/Private/MailAddresses.h>
#include <TavaroCore/Privacy/Private/PhoneNumbers.h>
#include <TavaroCore/Privacy/Private/SecretLabels.h>
#include <TavaroCore/Privacy/Private/SensitiveText.h>
#include <TavaroCore/Privacy/Private/Words.h>

#include <algorithm>
#include <string>

namespace tavaro {

namespace {

bool hasAny(LineFacts const& line, std::initializer_list<std::string_view> literals) {
    return std::any_of(literals.begin(), literals.end(), [&](auto literal) { return line.has(literal); });
}

bool hasAnyWord(LineFacts const& line, std::initializer_list<std::string_view> words) {
    return std::any_of(words.begin(), words.end(), [&](auto word) { return line.hasWord(word); });
}

/// Words with hyphens or underscores between them are names of things, whatever they begin with.
bool isNotWords(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) { return isDigit(c) || isUpper(c); });
}

/// "ghp_xxxxxxxxxxxx…": the end of a key that was made has more letters than that.
bool isMade(SensitiveCandidate const& candidate) {
    constexpr std::size_t length = 12, fewest = 4;
    auto const text = candidate.text();
    std::string end(text.substr(text.size() - std::min(text.size(), length)));
    std::sort(end.begin(), end.end());
    return std::unique(end.begin(), end.end()) - end.begin() >= static_cast<std::ptrdiff_t>(fewest);
}

bool isMadeKey(SensitiveCandidate const& candidate) { return isMade(candidate) && isNotWords(candidate.text()); }

/// "risk-…", "desk-…": the end of a word and what it is joined to.
bool isKeyByPrefix(SensitiveCandidate const& candidate) {
    auto const before = candidate.before();
    bool const endsWord = !before.empty() && isLetter(before.back());
    return !endsWord && isMadeKey(candidate);
}

bool isCredential(SensitiveCandidate const& candidate) {
    auto const text = candidate.text();
    return !SensitiveText::isPlaceholder(text) && !SensitiveText::isDottedIdentifier(text) &&
           !SensitiveText::isName(text) && isNotWords(text);
}

/// The value of a parameter of an address. Those that always are secrets need only be values.
bool isSecretParameter(SensitiveCandidate const& candidate) {
    auto const text = candidate.text();
    if (!SensitiveText::looksLikeValue(text) || SensitiveText::isNameOfSecret(text)) return false;
    auto const name = candidate.line.substr(candidate.wholeStart + 1, candidate.start - candidate.wholeStart - 2);
    bool const mayBeHarmless = name.size() <= 4 && !name.empty() && lower(name[0]) != 'p'; // key, sig, code, auth
    bool const isColumn = text.find_first_of("(){}[]<>\\") != text.npos;
    return !isColumn && (!mayBeHarmless || isNotWords(text));
}

bool isPasswordOfAddress(SensitiveCandidate const& candidate) {
    auto const text = candidate.text();
    constexpr std::string_view placeholders[] = {"mypass", "pass", "passwd", "password",
                                                 "pw",     "pwd",  "secret", "token"};
    bool const isName = std::binary_search(std::begin(placeholders), std::end(placeholders), text) ||
                        SensitiveText::isNameOfSecret(text);
    return !SensitiveText::isPlaceholder(text) && !isName && text.find("//") == text.npos;
}

bool isMail(SensitiveCandidate const& candidate) {
    return isMailAddress(candidate.text(), candidate.before(), candidate.after());
}

bool isCard(SensitiveCandidate const& candidate) {
    bool isFound = false;
    forEachCardNumber(candidate.line, [&](std::size_t start, std::size_t end) {
        isFound |= start == candidate.start && end == candidate.start + candidate.length;
    });
    return isFound;
}

bool isPhone(SensitiveCandidate const& candidate) {
    bool isFound = false;
    forEachPhoneNumber(candidate.line, [&](std::size_t start, std::size_t end) {
        isFound |= start == candidate.start && end == candidate.start + candidate.length;
    });
    return isFound;
}

/// What no reader of labels knows as one: "passwordX3=", "tokens2:". Only a value that looks random counts.
bool isRandomValue(SensitiveCandidate const& candidate) {
    auto const label = candidate.line.substr(candidate.wholeStart, candidate.start - candidate.wholeStart);
    auto const words = wordsOf(label);
    bool const isProperty = std::any_of(words.begin(), words.end(), [&](Word const& word) {
        return namesProperty(label.substr(word.start, word.end - word.start));
    });
    auto const text = candidate.text();
    return !isProperty && text.find("://") == text.npos && SensitiveText::looksLikeValue(text) &&
           SensitiveText::looksRandom(text) && text.find_first_of("()[]{}<>") == text.npos;
}

using enum SensitiveKind;
using Line = LineFacts const&;

bool hasLabelledValue(Line line) {
    return (line.has(':') || line.has('=')) &&
           hasAnyWord(line, {"pass", "pwd", "secret", "token", "key", "credential"});
}

constexpr SensitiveRule rules[] = {
    {privateKey, 0, R"(-----BEGIN [A-Z ]*PRIVATE KEY-----)", [](Line l) { return l.has("-----BEGIN "); }, nullptr},
    {apiKey, 0, R"(sk[-–]ant[-–][A-Za-z0-9_\-–]{16,})", [](Line l) { return l.has("sk") && l.has("ant"); }, isMade},
    {apiKey, 0, R"(sk[-–](?:proj[-–]|svcacct[-–]|admin[-–])?[A-Za-z0-9_\-–]{20,})",
     [](Line l) {
         return hasAny(l, {"sk-", "sk–"});
     },
     isKeyByPrefix},
    {apiKey, 0, R"((?<![A-Z0-9])(?:AK[I1l]A|AS[I1l]A)[A-Z0-9]{16}(?![A-Za-z0-9]))",
     [](Line l) {
         return hasAny(l, {"AK", "AS"});
     },
     isMade},
    {apiKey, 0, R"(gh[pousr]_[A-Za-z0-9]{30,})", [](Line l) { return l.has("gh") && l.has('_'); }, isMade},
    {apiKey, 0, R"(github_pat_[A-Za-z0-9_]{30,})", [](Line l) { return l.has("github_pat_"); }, isMade},
    {apiKey, 0, R"(glpat[-–][A-Za-z0-9_\-]{20,})", [](Line l) { return l.has("glpat"); }, isMade},
    {apiKey, 0, R"(xox[abeprs][-–][A-Za-z0-9\-–]{10,})", [](Line l) { return l.has("xox"); }, isMade},
    {apiKey, 0, R"(A[I1l]za[0-9A-Za-z_\-]{30,})", [](Line l) { return l.has("za"); }, isMade},
    {apiKey, 0, R"((?:sk|rk|pk)_(?:live|test)_[0-9A-Za-z]{16,})",
     [](Line l) {
         return hasAny(l, {"_live_", "_test_"});
     },
     isMade},
    {apiKey, 0, R"(whsec_[0-9A-Za-z]{20,})", [](Line l) { return l.has("whsec_"); }, isMade},
    {apiKey, 0, R"(SG\.[A-Za-z0-9_\-]{16,}\.[A-Za-z0-9_\-]{16,})", [](Line l) { return l.has("SG."); }, isMade},
    {apiKey, 0, R"((?:hf|npm|pypi|dop_v1|shpat|shpss)_[A-Za-z0-9_\-]{24,})",
     [](Line l) {
         return hasAny(l, {"hf_", "npm_", "pypi_", "dop_v1_", "shpat_", "shpss_"});
     },
     isMadeKey},
    {token, 0, R"(eyJ[A-Za-z0-9_\-]{8,}\.eyJ[A-Za-z0-9_\-]{8,}\.[A-Za-z0-9_\-]{8,})",
     [](Line l) { return l.has("eyJ"); }, isMade},
    {token, 0, R"(eyJ[A-Za-z0-9_\-]{24,})", [](Line l) { return l.has("eyJ"); }, nullptr},
    {token, 1, R"((?i)\bbearer\s+([A-Za-z0-9._\-~+/]{16,}=*))", [](Line l) { return l.hasWord("bearer"); },
     isCredential},
    {token, 1,
     R"((?i)[?&#](?:access_token|refresh_token|id_token|token|api_?key|key|sig|signature|secret|auth|code|password|pwd)=([^&\s#]{6,}))",
     [](Line l) { return l.has('=') && (l.has('?') || l.has('&') || l.has('#')); }, isSecretParameter},
    {token, 1, R"((?i)://[^\s/:@]+:([^\s/@]{4,})@)", [](Line l) { return l.has("://") && l.has('@'); },
     isPasswordOfAddress, SensitiveRule::WhenNot::isHarmless}, // and no mail address either
    {email, 0, R"([A-Za-z0-9._%+\-]+@[A-Za-z0-9\-]+(?:\.[A-Za-z0-9\-]+)*\.[A-Za-z]{2,})",
     [](Line l) { return l.has('@'); }, isMail},
    {card, 0, R"((?<![\d.])(?<!\d[ \-])(?:\d[ \-]?){12,18}\d(?![\d.])(?![ \-]\d))",
     [](Line l) { return l.digits() >= 13 || !l.isASCII(); }, isCard},
    {secret, 1,
     R"((?i)(?<![A-Za-z0-9])(?:password|passwd|passphrase|pwd|secret|token|api[_\- ]?key|apikey|access[_\- ]?key|auth[_\- ]?key|credentials?|private[_\- ]?key|client[_\- ]?secret|signing[_\- ]?key)[A-Za-z0-9_\-]*\s*[:=]\s*["'`]?([^\s"'`,;]{6,}))",
     hasLabelledValue, isRandomValue},
    {phone, 0,
     R"((?<![\w.])(?<!\d[\s\-])(?:\+\d{1,3}[\s.\-]?)?(?:\(\d{2,4}\)[\s.\-]?)?\d{2,4}(?:[\s.\-]\d{3,4}){1,2}(?![\w.])(?![\s\-]\d))",
     [](Line l) { return l.digits() >= 5 || !l.isASCII(); }, isPhone},
    {phone, 0, R"((?<![\w.])\+\d{10,14}(?![\w.]))", [](Line l) { return l.has('+'); }, isPhone},
};

}

std::span<SensitiveRule const> sensitiveRules() { return rules; }

}
