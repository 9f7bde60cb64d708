#include <TavaroCore/Privacy/Private/SecretValues.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroCore/Privacy/Private/SensitiveText.h>
#include <TavaroCore/Privacy/Private/Words.h>

#include <algorithm>
#include <string>

namespace tavaro {

namespace {

/// What the characters of a value are.
struct Makeup {
    std::size_t letters = 0, digits = 0, capitals = 0, symbols = 0, blanks = 0, joints = 0;

    explicit Makeup(std::string_view text) {
        for (char const c : text) {
            if (isLetter(c) || isBeyondASCII(c)) {
                ++letters;
                capitals += isUpper(c);
            } else if (isDigit(c)) {
                ++digits;
            } else if (isBlank(c)) {
                ++blanks;
            } else if (isAnyOf(c, "-_.")) {
                ++joints;
            } else {
                ++symbols;
            }
        }
    }
    bool isWord() const { return letters > 0 && digits + symbols + blanks + joints == 0; }
    bool isWords() const { return letters > 0 && digits + symbols + blanks == 0; }
    /// More than one kind of character, as passwords are advised to have.
    bool isMixed() const { return letters > 0 && (digits > 0 || symbols > 0); }
};

bool hasStem(std::string_view text) {
    std::string lowered(text);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(), lower);
    constexpr std::string_view stems[] = {"password", "passwd", "passwort", "secret",     "token",
                                          "api_key",  "apikey", "api-key",  "passphrase", "credential",
                                          "_key",     "-key",   "_psk",     "_pwd",       "_pass"};
    return std::any_of(std::begin(stems), std::end(stems),
                       [&](auto stem) { return lowered.find(stem) != lowered.npos; });
}

/// 0x8803, 1.30219, 3s
bool isNumeric(std::string_view text) {
    if (text.starts_with("0x"))
        return std::all_of(text.begin() + 2, text.end(), [](char c) { return isHexDigit(c) || isAnyOf(c, "ULul"); });
    return isDigit(text[0]) && text.find('.') != text.npos &&
           std::all_of(text.begin(), text.end(), [](char c) { return isDigit(c) || c == '.'; });
}

/// "get_private_key", "TLS_PSK_WITH_AES128": a name in code, of the secret or something else.
bool isIdentifierOfSecret(std::string_view text) {
    bool const isIdentifier =
        !isDigit(text[0]) && text.find('_') != text.npos &&
        std::all_of(text.begin(), text.end(), [](char c) { return isAlphanumeric(c) || c == '_'; });
    return isIdentifier && hasStem(text);
}

/// "/etc/shop", "/etc", "/pw.txt", "~/pw", "C:\pw"; "/Tulip77" is none.
bool isPath(std::string_view text) {
    if (SensitiveText::looksRandom(text)) return false;
    if (text[0] == '~' || text.starts_with("./") || text.starts_with("../") || text.find(":\\") == 1) return true;
    return text[0] == '/' && (text.find_first_of("/.", 1) != text.npos ||
                              std::all_of(text.begin() + 1, text.end(), [](char c) { return isLower(c); }));
}

/// "HTTP_FLAG_V4": a constant of a program.
bool isConstant(std::string_view text) {
    return text.find('_') != text.npos &&
           std::all_of(text.begin(), text.end(), [](char c) { return isUpper(c) || isDigit(c) || c == '_'; });
}

/// Colors, paths, addresses, names of files, versions, expressions of code.
bool isOfOtherKind(std::string_view text) {
    if (isNumeric(text) || isIdentifierOfSecret(text)) return true;
    auto const option = text.substr(text.starts_with("--") ? 2 : 1);
    bool const isFlag = text[0] == '-' && !option.empty() && isLetter(option[0]);
    if (isFlag || (text[0] == ':' && text.size() > 1 && isAnyOf(text[1], "*:abcdefghijklmnopqrstuvwxyz"))) return true;
    bool const isRule = SensitiveText::isCommonWord(text.substr(0, text.find('|'))); // "required|string|min:8"
    if (isRule && text.find('|') != text.npos) return true;
    if (text.starts_with("$!") || text.starts_with("qr/") || text.ends_with('@') || text.find("\\n") != text.npos)
        return true;
    if (text.find("://") != text.npos || text.starts_with("//")) return true;
    bool const isColor = text[0] == '#' && text.size() <= 9 && std::all_of(text.begin() + 1, text.end(), isHexDigit);
    if (isColor) return true;
    if (isPath(text)) return true;
    if (text[0] == '&' || text[0] == '*' || text[0] == '@') {
        auto const name = text[0] == '@' ? text : text.substr(0, text.find('(')); // "*PK11_Find(Slot"
        return std::all_of(name.begin() + 1, name.end(),
                           [](char c) { return isAlphanumeric(c) || isAnyOf(c, "_->."); });
    }
    return text.find("->") != text.npos || text.find("::") != text.npos || text.find("=>") != text.npos ||
           text.find("${") != text.npos || text.find("{{") != text.npos || text.find("$(") != text.npos;
}

/// Words of a sentence rather than of a passphrase.
bool isSentence(std::string_view text) {
    constexpr std::string_view usual[] = {"the",  "your", "is", "must", "enter", "not", "please",     "for",
                                          "of",   "to",   "be", "a",    "or",    "and", "are",        "this",
                                          "with", "has",  "if", "from", "on",    "at",  "characters", "der",
                                          "die",  "das",  "de", "la",   "le",    "un",  "new"};
    for (auto const& word : wordsOf(text)) {
        std::string lowered(text.substr(word.start, word.end - word.start));
        std::transform(lowered.begin(), lowered.end(), lowered.begin(), lower);
        if (std::find(std::begin(usual), std::end(usual), lowered) != std::end(usual)) return true;
    }
    return false;
}

/// As many words as people remember.
bool isPhrase(Makeup const& makeup) {
    constexpr std::size_t fewestWords = 3, mostWords = 25;
    auto const words = makeup.blanks + 1;
    return words >= fewestWords && words <= mostWords && makeup.symbols == 0 && makeup.capitals <= words;
}

bool isQuotedForm(ValueForm form) { return form == ValueForm::quoted || form == ValueForm::tag; }

/// Several words as one value.
bool isSecretWords(LabelledValue const& value, std::string_view text, Makeup const& makeup) {
    if (value.label == LabelKind::phrase) {
        constexpr std::size_t fewestOfSeed = 10;
        bool const isSeed = makeup.blanks + 1 >= fewestOfSeed && makeup.capitals == 0 && makeup.symbols == 0;
        bool const isBounded = isQuotedForm(value.form) || value.form == ValueForm::setting;
        return isSeed || (isPhrase(makeup) && !isSentence(text) && (isBounded || makeup.digits > 0));
    }
    if (value.label != LabelKind::password) return false;
    if (!isQuotedForm(value.form) && value.form != ValueForm::setting && value.form != ValueForm::assigned)
        return false;
    if (isSentence(text) || hasStem(text) || !value.isAlone) return false;
    return makeup.digits > 0 || (makeup.capitals == 0 && isPhrase(makeup));
}

/// Four to eight digits, also in two groups.
bool isCode(std::string_view text) {
    auto const digits = std::count_if(text.begin(), text.end(), isDigit);
    auto const others = static_cast<std::ptrdiff_t>(text.size()) - digits;
    return digits >= 4 && digits <= 8 && others <= 1 &&
           std::all_of(text.begin(), text.end(), [](char c) { return isDigit(c) || isAnyOf(c, " -"); });
}

/// "PIN 4821", "CVV 731", "pin: 4821": a name that nothing else has, also with few digits behind it.
bool isNamedCode(LabelledValue const& value, std::string_view line, std::string_view text) {
    constexpr std::size_t shortest = 3, shortestOfPIN = 4, longest = 8, longestName = 4;
    if (text.size() < shortest || text.size() > longest || !std::all_of(text.begin(), text.end(), isDigit))
        return false;
    auto const before = line.substr(0, value.start);
    auto const end = before.find_last_not_of(" :=");
    if (end == before.npos) return false;
    auto start = end + 1;
    while (start > 0 && isAlphanumeric(before[start - 1])) --start;
    auto const name = before.substr(start, end + 1 - start);
    bool const isCheck =
        name.size() <= longestName && name.size() > 2 && lower(name[0]) == 'c' && lower(name[1]) == 'v';
    bool const isPIN = name == "PIN" || name == "TAN" || name == "OTP";
    return (isCheck && text.size() <= shortestOfPIN) || (isPIN && text.size() >= shortestOfPIN);
}

/// "specified", "missing": what sentences say of a password.
bool isOfSentence(std::string_view word) {
    constexpr std::string_view endings[] = {"able",  "ably", "ary", "ed",  "ible", "ing",
                                            "ional", "ive",  "ly",  "ory", "ous"};
    return std::any_of(std::begin(endings), std::end(endings), [&](auto ending) { return word.ends_with(ending); });
}

/// A plain word as a password: nothing but its place says so.
bool isPlainPassword(LabelledValue const& value, std::string_view text, Makeup const& makeup) {
    constexpr std::size_t shortest = 6;
    if (text.size() < shortest || SensitiveText::isNameOfSecret(text) || hasStem(text)) return false;
    bool const isLowerCase = makeup.capitals == 0;
    switch (value.form) {
    case ValueForm::quoted:
    case ValueForm::flag: return value.isAlone || value.isInCall;
    case ValueForm::tag: return isLowerCase;
    case ValueForm::setting: return value.isAlone && !value.isInCall;
    case ValueForm::assigned:
    case ValueForm::colon: return value.isAlone && !value.isInCall;
    case ValueForm::cell: return value.isAlone && isLowerCase;
    case ValueForm::sentence:
        return value.isAlone && isLowerCase && makeup.isWord() && text.size() >= 8 && !isOfSentence(text);
    case ValueForm::nextLine:
    case ValueForm::adjacent: return false;
    }
    return false;
}

bool isPassword(LabelledValue const& value, std::string_view text, Makeup const& makeup) {
    constexpr std::size_t shortest = 4;
    if (text.size() < shortest) return false;
    bool const isCodeLike = value.form == ValueForm::assigned || value.isInCall;
    if (makeup.digits == text.size()) {
        return text.size() >= 6 && !isCodeLike && value.form != ValueForm::adjacent && value.form != ValueForm::cell;
    }
    if (makeup.isWords() && (makeup.capitals > 0 || makeup.joints > 0 || makeup.isWord())) {
        if (makeup.joints == 0 || value.form != ValueForm::assigned) return isPlainPassword(value, text, makeup);
        return false;
    }
    if (isCodeLike && !isQuotedForm(value.form)) {
        if (value.isInCall || !value.isAlone) return SensitiveText::looksRandom(text);
        return !hasStem(text) && text.find_first_of("()[]{}<>") == text.npos && makeup.isMixed();
    }
    if (value.form == ValueForm::adjacent || value.form == ValueForm::cell || value.form == ValueForm::nextLine) {
        return makeup.isMixed() && text.size() >= 6 && !hasStem(text) && !isConstant(text) &&
               (value.isAlone || makeup.digits > 0) && text.find_first_of("()[]{}<>=:,/\\") == text.npos;
    }
    if (value.form == ValueForm::sentence && !value.isAlone) return makeup.isMixed();
    return !hasStem(text) || makeup.digits > 0;
}

/// "tulip.nest7" where code has no names: in quotes, or on a shell's line. One dot, and neither part is a word of code.
bool isDottedPassword(LabelledValue const& value, std::string_view text) {
    if (value.label != LabelKind::password || !(isQuotedForm(value.form) || value.isOfShell)) return false;
    auto const dot = text.find('.');
    if (!SensitiveText::isDottedIdentifier(text) || text.find('.', dot + 1) != text.npos || hasStem(text)) return false;
    auto const first = text.substr(0, dot), last = text.substr(dot + 1);
    constexpr std::string_view types[] = {"conf", "cpp", "css", "env", "html", "ini", "js",  "json", "key", "pem",
                                          "php",  "py",  "sh",  "ts",  "toml", "txt", "xml", "yaml", "yml"};
    if (std::find(std::begin(types), std::end(types), last) != std::end(types)) return false;
    return SensitiveText::looksLikeValue(first) && SensitiveText::looksLikeValue(last) && !namesProperty(first) &&
           !namesProperty(last);
}

/// "184065-895034-878374-590118", a UUID: digits, maybe hexadecimal, in several groups.
bool isGroups(std::string_view text) {
    constexpr std::size_t shortest = 19;
    return text.size() >= shortest && SensitiveText::isHexWithHyphens(text) &&
           std::count(text.begin(), text.end(), '-') > 2 && std::count_if(text.begin(), text.end(), isDigit) > 5;
}

/// Letters and digits mixed without a word between them; one case is enough.
bool isMachineMade(std::string_view text, Makeup const& makeup) {
    constexpr std::size_t shortest = 16;
    constexpr double leastEntropy = 3.2; // bits
    return text.size() >= shortest && makeup.digits > 1 && makeup.letters + makeup.digits == text.size() &&
           (makeup.capitals == 0 || makeup.capitals == makeup.letters) && SensitiveText::entropy(text) >= leastEntropy;
}

/// A key or token: made by a machine, mostly.
bool isToken(LabelledValue const& value, std::string_view text, Makeup const& makeup) {
    constexpr std::size_t shortest = 6, shortestWord = 8, shortestLoose = 16, longestCount = 20;
    if (text.size() < shortest) return false;
    if (makeup.digits == text.size()) return text.size() >= longestCount && value.form != ValueForm::cell;
    if (isGroups(text)) return !value.isInCall;
    bool const isLoose = value.form == ValueForm::adjacent || value.form == ValueForm::cell ||
                         value.form == ValueForm::sentence || value.form == ValueForm::nextLine;
    if (isLoose) {
        return text.size() >= shortestLoose
                   ? SensitiveText::looksRandom(text) || isMachineMade(text, makeup) ||
                         (makeup.digits > 2 && makeup.joints > 0 && text.find_first_of("_.") == text.npos)
                   : value.form == ValueForm::adjacent && makeup.digits * 3 > text.size() && text.size() >= 10;
    }
    if (SensitiveText::looksRandom(text) || isMachineMade(text, makeup)) return true;
    bool const isCodeLike = (value.form == ValueForm::assigned || value.isInCall) && !isQuotedForm(value.form);
    if (isCodeLike || !value.isAlone || hasStem(text)) return false;
    if (makeup.isWords()) {
        return makeup.isWord() && makeup.capitals == 0 && text.size() >= shortestWord &&
               (value.form == ValueForm::setting || value.form == ValueForm::colon || value.form == ValueForm::quoted);
    }
    return makeup.isMixed() && text.find_first_of("()[]{}<>=:/\\ ") == text.npos;
}

/// What only is called a key: an entry of a map as well, or a fingerprint.
bool isKey(LabelledValue const& value, std::string_view text, Makeup const& makeup) {
    constexpr std::size_t shortest = 20;
    bool const isLoose = value.form == ValueForm::adjacent || value.form == ValueForm::sentence ||
                         value.form == ValueForm::nextLine || value.isInCall;
    return !isLoose && text.size() >= shortest && SensitiveText::looksRandom(text) && makeup.digits > 1 &&
           text.find_first_of("_.()[]{}:") == text.npos;
}

}

bool isSecret(LabelledValue const& value, std::string_view line) {
    auto const text = line.substr(value.start, value.end - value.start);
    if (text.empty() || isOfOtherKind(text)) return false;
    if (!SensitiveText::looksLikeValue(text) && !isDottedPassword(value, text)) return false;
    Makeup const makeup(text);
    if (value.isOfLongerName &&
        (value.label == LabelKind::weak || makeup.joints + makeup.blanks > 0 || !SensitiveText::looksRandom(text))) {
        return false;
    }
    if (value.label == LabelKind::code && isNamedCode(value, line, text)) return true;
    if (value.label == LabelKind::code && isCode(text)) return value.form != ValueForm::adjacent || text.size() > 5;
    if (makeup.blanks > 0) return isSecretWords(value, text, makeup);
    switch (value.label) {
    case LabelKind::phrase:
    case LabelKind::password: return isPassword(value, text, makeup);
    case LabelKind::weak: return isKey(value, text, makeup);
    default: return isToken(value, text, makeup);
    }
}

}
