#include <TavaroCore/Privacy/Private/SensitiveText.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include <fmt/format.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

namespace tavaro::SensitiveText {

namespace {

// Independent of the locale.
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool isLower(char c) { return c >= 'a' && c <= 'z'; }
bool isLetter(char c) { return isUpper(c) || isLower(c); }
bool isHex(char c) { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }
char lower(char c) { return isUpper(c) ? static_cast<char>(c + 32) : c; }

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

/// What follows labels in code, documentation and forms, and is no secret.
constexpr std::array<std::string_view, 66> commonWords{
    "required",  "optional", "string",   "boolean",  "number",    "integer",   "undefined",   "unknown",  "invalid",
    "incorrect", "missing",  "expired",  "changed",  "updated",   "enabled",   "disabled",    "hidden",   "forgotten",
    "forgot?",   "reset",    "example",  "default",  "nullable",  "readonly",  "environment", "function", "object",
    "response",  "request",  "password", "secret",   "token",     "apikey",    "credentials", "username", "protected",
    "private",   "public",   "secure",   "security", "encrypted", "generated", "redacted",    "removed",  "rotated",
    "revoked",   "accepted", "rejected", "verified", "confirmed", "unchanged", "visible",     "strong",   "medium",
    "weak",      "bearer",   "basic",    "oauth2",   "sha256",    "bcrypt",    "argon2id",    "argon2",   "base64",
    "vault",     "keychain", "localhost"};

constexpr std::array<std::string_view, 39> secretLabels{"password",
                                                        "passwd",
                                                        "passphrase",
                                                        "passcode",
                                                        "pwd",
                                                        "secret",
                                                        "secret key",
                                                        "secret access key",
                                                        "access key",
                                                        "client secret",
                                                        "shared secret",
                                                        "api key",
                                                        "api token",
                                                        "api secret",
                                                        "token",
                                                        "access token",
                                                        "refresh token",
                                                        "auth token",
                                                        "bearer token",
                                                        "session token",
                                                        "id token",
                                                        "private key",
                                                        "signing key",
                                                        "signing secret",
                                                        "webhook secret",
                                                        "encryption key",
                                                        "master key",
                                                        "license key",
                                                        "recovery key",
                                                        "recovery code",
                                                        "backup code",
                                                        "personal access token",
                                                        "account key",
                                                        "authorization basic",
                                                        "session id",
                                                        "sessionid",
                                                        "apikey",
                                                        "deploy key",
                                                        "credentials"};

/// "getToken(user", which the blank behind it cut off, "next()", "read().trimmed()". "Pa(ss)w0rd" is none.
bool isCall(std::string_view text) {
    auto const open = text.find('(');
    if (open == std::string_view::npos) return false;
    auto const isNameOrPath = [](char c) {
        return isLetter(c) || isDigit(c) || std::string_view("_.:>-").find(c) != std::string_view::npos;
    };
    if (!std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(open), isNameOrPath)) return false;
    auto const close = text.find(')', open);
    if (close == std::string_view::npos || close + 1 == text.size()) return true;
    return std::string_view(".)]?-;").find(text[close + 1]) != std::string_view::npos;
}

/// Changes between upper case, lower case and digits; a capital that begins a word is none.
int changesOfKind(std::string_view text) {
    int changes = 0;
    auto const kind = [](char c) { return isDigit(c) ? 1 : isUpper(c) ? 2 : isLower(c) ? 3 : 0; };
    for (std::size_t i = 1; i < text.size(); ++i) {
        int const before = kind(text[i - 1]), now = kind(text[i]);
        if (before && now && before != now && !(before == 2 && now == 3)) ++changes;
    }
    return changes;
}

/// Compatibility forms composed, case folded.
icu::Normalizer2 const& foldingForm() {
    static icu::Normalizer2 const& form = [&]() -> icu::Normalizer2 const& {
        UErrorCode code = U_ZERO_ERROR;
        auto const* instance = icu::Normalizer2::getNFKCCasefoldInstance(code);
        if (U_FAILURE(code)) std::abort(); // ICU without its data
        return *instance;
    }();
    return form;
}

icu::UnicodeString normalized(std::string_view utf8) {
    UErrorCode code = U_ZERO_ERROR;
    auto const text = icu::UnicodeString::fromUTF8({utf8.data(), static_cast<std::int32_t>(utf8.size())});
    auto const form = foldingForm().normalize(text, code);
    return U_SUCCESS(code) ? form : text;
}

void appendCharacter(std::string& utf8, UChar32 c) {
    std::array<char, U8_MAX_LENGTH> bytes{};
    std::int32_t length = 0;
    U8_APPEND_UNSAFE(bytes.data(), length, c);
    utf8.append(bytes.data(), static_cast<std::size_t>(length));
}

UChar32 folded(UChar32 c) {
    switch (c) {
    case '1':
    case 'i':
    case '|':
    case 0x131: return 'l';
    case '0': return 'o';
    case 0x2010:
    case 0x2011:
    case 0x2012:
    case 0x2013:
    case 0x2014:
    case 0x2212: return '-';
    case 0x2018:
    case 0x2019:
    case '`': return '\'';
    case 0x201C:
    case 0x201D: return '"';
    default: return c;
    }
}

}

bool luhn(std::string_view text) {
    int sum = 0, count = 0;
    for (std::size_t i = text.size(); i > 0; --i) {
        if (!isDigit(text[i - 1])) continue;
        int digit = text[i - 1] - '0';
        if (count++ % 2) digit = digit > 4 ? 2 * digit - 9 : 2 * digit;
        sum += digit;
    }
    return count > 1 && sum % 10 == 0;
}

double entropy(std::string_view text) {
    std::array<std::size_t, 256> counts{};
    for (char const c : text) ++counts[static_cast<unsigned char>(c)];
    double bits = 0;
    for (auto const count : counts) {
        if (count == 0) continue;
        double const share = static_cast<double>(count) / static_cast<double>(text.size());
        bits -= share * std::log2(share);
    }
    return bits;
}

bool isDottedIdentifier(std::string_view text) {
    bool startsPart = true, hasDot = false;
    for (char const c : text) {
        if (c == '.') {
            if (startsPart) return false;
            startsPart = hasDot = true;
        } else if (isLetter(c) || c == '_' || (isDigit(c) && !startsPart)) {
            startsPart = false;
        } else {
            return false;
        }
    }
    return hasDot && !startsPart;
}

bool isHexWithHyphens(std::string_view text) {
    return text.find('-') != std::string_view::npos &&
           std::all_of(text.begin(), text.end(), [](char c) { return isHex(c) || c == '-'; });
}

bool looksRandom(std::string_view text) {
    constexpr std::size_t shortest = 16;
    constexpr double leastEntropy = 3.0; // bits; forty digits of hexadecimal have 3.6 and more
    if (text.size() < shortest || isDottedIdentifier(text) || isHexWithHyphens(text)) return false;
    if (std::count(text.begin(), text.end(), '/') > 2 && changesOfKind(text) < 6) return false; // a path
    auto const perEight = static_cast<double>(changesOfKind(text)) * 8 / static_cast<double>(text.size());
    return entropy(text) >= leastEntropy && perEight >= 1;
}

bool isName(std::string_view text) {
    constexpr std::size_t longest = 32; // more without a digit is hardly a name
    auto const isPart = [](char c) { return isLetter(c) || c == '_'; };
    return text.size() <= longest && std::all_of(text.begin(), text.end(), isPart) &&
           static_cast<std::size_t>(changesOfKind(text) + 1) * 3 <= text.size();
}

bool isNameOfSecret(std::string_view text) {
    auto const inLowerCase = lowered(text);
    if (!isName(text) || (inLowerCase == text && text.find('_') == std::string_view::npos)) return false;
    constexpr std::array<std::string_view, 6> words{"password", "passwd", "passphrase", "secret", "token", "pwd"};
    return std::any_of(words.begin(), words.end(),
                       [&](std::string_view word) { return inLowerCase.find(word) != std::string::npos; });
}

bool isPlaceholder(std::string_view text) {
    if (text.empty()) return true;
    if (std::string_view("<{[(").find(text.front()) != std::string_view::npos) return true;
    if (text.starts_with("${") || text.starts_with("$(") || text.starts_with("%(")) return true;
    auto const isReference = std::string_view("$%!").find(text.front()) != std::string_view::npos;
    auto const name = text.substr(1, text.size() - (text.size() > 1 && text.back() == '%' ? 2 : 1));
    if (isReference && isName(name)) return true; // "$TOKEN", "%TOKEN%", "!vault"
    if (text.starts_with("\xE2\x80\xA2") || text.starts_with("\xE2\x97\x8F")) return true; // dots of a password field
    auto const isMask = [](char c) { return c == '*' || c == '.' || c == 'x' || c == 'X' || c == '-' || c == '_'; };
    if (std::all_of(text.begin(), text.end(), isMask)) return true;
    auto const text_ = lowered(text);
    return text_.starts_with("your") || text_.starts_with("my_") || text_.starts_with("process.env") ||
           text_.starts_with("os.environ") || text_.starts_with("changeme_here");
}

bool looksLikeValue(std::string_view text) {
    if (isPlaceholder(text) || isDottedIdentifier(text)) return false;
    if (text.find_first_of("(){}[]<>") != std::string_view::npos && text.find_first_of("0123456789") == text.npos) {
        return false; // a call, a type
    }
    auto bare = lowered(text);
    while (!bare.empty() && std::string_view(".,;:!").find(bare.back()) != std::string_view::npos) bare.pop_back();
    if (std::find(commonWords.begin(), commonWords.end(), bare) != commonWords.end()) return false;
    return !isCall(bare);
}

std::size_t lengthOfFirstPiece(std::string_view text) {
    constexpr int mostCharacters = 32;
    auto const length = static_cast<std::int32_t>(std::min(text.size(), std::size_t{mostCharacters} * U8_MAX_LENGTH));
    std::int32_t end = 0;
    UChar32 c = 0;
    U8_NEXT(text.data(), end, length, c);
    for (int characters = 1; characters < mostCharacters && end < length; ++characters) {
        if (static_cast<unsigned char>(text[static_cast<std::size_t>(end)]) < 0x80) break;
        auto next = end;
        U8_NEXT(text.data(), next, length, c);
        if (c < 0 || foldingForm().hasBoundaryBefore(c)) break;
        end = next;
    }
    return static_cast<std::size_t>(end);
}

std::string foldLookAlikes(std::string_view text) {
    std::string result;
    auto const add = [&](UChar32 c) {
        if (!u_isUWhiteSpace(c)) {
            appendCharacter(result, folded(c));
        } else if (!result.ends_with(' ')) {
            result += ' ';
        }
    };
    while (!text.empty()) {
        auto const length = lengthOfFirstPiece(text);
        if (length == 1 && static_cast<unsigned char>(text[0]) < 0x80) {
            add(lower(text[0]));
        } else {
            auto const piece = normalized(text.substr(0, length));
            for (std::int32_t i = 0; i < piece.length(); i = piece.moveIndex32(i, 1)) add(piece.char32At(i));
        }
        text.remove_prefix(length);
    }
    return result;
}

bool isSecretLabel(std::string_view text) {
    std::string label; // words in lower case, a blank between them
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const isPart = isLetter(text[i]) || isDigit(text[i]);
        bool const beginsWord = i > 0 && isUpper(text[i]) && isLower(text[i - 1]); // "accessToken"
        if ((!isPart || beginsWord) && !label.empty() && label.back() != ' ') label += ' ';
        if (isPart) label += lower(text[i]);
    }
    if (label.ends_with(' ')) label.pop_back();
    return std::any_of(secretLabels.begin(), secretLabels.end(), [&](std::string_view known) {
        if (!label.ends_with(known)) return false;
        return label.size() == known.size() || label[label.size() - known.size() - 1] == ' ';
    });
}

std::string hash(std::string_view text) {
    std::uint64_t value = 0xCBF29CE484222325; // FNV-1a, 64 bits
    for (char const c : foldLookAlikes(text)) value = (value ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return fmt::format("{:016x}", value);
}

}
