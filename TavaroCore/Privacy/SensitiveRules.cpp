#include <TavaroCore/Privacy/Private/SensitiveRules.h>

#include <TavaroCore/Privacy/Private/SensitiveText.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tavaro {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

std::string digitsOf(std::string_view text) {
    std::string digits;
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits), isDigit);
    return digits;
}

bool hasAny(LineFacts const& line, std::initializer_list<std::string_view> literals) {
    return std::any_of(literals.begin(), literals.end(), [&](auto literal) { return line.has(literal); });
}

bool hasAnyWord(LineFacts const& line, std::initializer_list<std::string_view> words) {
    return std::any_of(words.begin(), words.end(), [&](auto word) { return line.hasWord(word); });
}

/// Words with hyphens or underscores between them are names of things, whatever they begin with.
bool isNotWords(SensitiveCandidate const& candidate) {
    auto const text = candidate.text();
    return std::any_of(text.begin(), text.end(), [](char c) { return isDigit(c) || (c >= 'A' && c <= 'Z'); });
}

/// "risk-…", "desk-…": the end of a word and what it is joined to.
bool isKeyByPrefix(SensitiveCandidate const& candidate) {
    auto const before = candidate.before();
    bool const endsWord = !before.empty() && isLetter(before.back());
    return !endsWord && isNotWords(candidate);
}

bool isCredential(SensitiveCandidate const& candidate) {
    auto const text = candidate.text();
    return !SensitiveText::isPlaceholder(text) && !SensitiveText::isDottedIdentifier(text) &&
           !SensitiveText::isName(text) && isNotWords(candidate);
}

/// The value of a parameter of an address. Those that always are secrets need only be values.
bool isSecretParameter(SensitiveCandidate const& candidate) {
    auto const text = candidate.text();
    if (!SensitiveText::looksLikeValue(text)) return false;
    auto const name = candidate.line.substr(candidate.wholeStart + 1, candidate.start - candidate.wholeStart - 2);
    bool const mayBeHarmless = name.size() <= 4 && !name.empty() && lower(name[0]) != 'p'; // key, sig, code, auth
    return !mayBeHarmless || isNotWords(candidate);
}

bool isPasswordOfAddress(SensitiveCandidate const& candidate) {
    return !SensitiveText::isPlaceholder(candidate.text());
}

/// Names of pictures ("icon@2x.png"), of repositories ("git@host.org:path") and of places on other machines
/// ("maria@host.org:~/notes") look like addresses.
bool isMailAddress(SensitiveCandidate const& candidate) {
    constexpr std::array<std::string_view, 14> fileTypes{"png", "jpg", "jpeg", "gif",  "svg", "webp", "pdf",
                                                         "css", "js",  "ts",   "json", "map", "html", "zip"};
    auto const text = candidate.text();
    auto ending = std::string(text.substr(text.rfind('.') + 1));
    std::transform(ending.begin(), ending.end(), ending.begin(), lower);
    if (std::find(fileTypes.begin(), fileTypes.end(), ending) != fileTypes.end()) return false;
    auto const after = candidate.after();
    bool const isPlace = after.starts_with(":/") || after.starts_with(":~");
    return !isPlace && !(text.starts_with("git@") && after.starts_with(':'));
}

bool isCardNumber(SensitiveCandidate const& candidate) {
    auto const digits = digitsOf(candidate.text());
    bool const isOneDigit = digits.find_first_not_of(digits[0]) == std::string::npos;
    bool const isPhone = candidate.before().ends_with('+');
    return !isOneDigit && !isPhone && digits[0] != '0' && SensitiveText::luhn(digits);
}

/// "PASSWORD_RESET_TIMEOUT", "api_key_env": about a secret, but not followed by it.
bool namesProperty(std::string_view label) {
    constexpr std::string_view properties[] = {"timeout", "expiry", "expires", "ttl",  "length", "limit", "count",
                                               "env",     "path",   "file",    "type", "url",    "name",  "policy"};
    auto const end = label.find_last_not_of(" :=\"'`");
    auto name = std::string(label.substr(0, end == label.npos ? 0 : end + 1));
    std::transform(name.begin(), name.end(), name.begin(), lower);
    return std::any_of(std::begin(properties), std::end(properties), [&](auto property) {
        return name.ends_with(property) && name.size() > property.size() &&
               !isLetter(name[name.size() - property.size() - 1]);
    });
}

/// "DB_PASSWORD=", "--password=", ";Password=": settings of a shell or an address, where a value stands for itself.
bool isSetting(SensitiveCandidate const& candidate, std::string_view label) {
    if (!label.ends_with('=') || label.ends_with(" =")) return false;
    bool const isUpperCase = std::none_of(label.begin(), label.end(), [](char c) { return c >= 'a' && c <= 'z'; });
    auto const before = candidate.line.substr(0, candidate.wholeStart);
    return isUpperCase || before.ends_with("--") || before.ends_with(';');
}

bool isLabelledSecret(SensitiveCandidate const& candidate) {
    auto text = candidate.text();
    while (!text.empty() && (text.back() == ')' || text.back() == ';' || text.back() == '.')) text.remove_suffix(1);
    if (text.empty() || text.front() == ':' || text.front() == '=') return false; // "Token::Kind", "token == kind"
    auto const label = candidate.line.substr(candidate.wholeStart, candidate.start - candidate.wholeStart);
    if (!SensitiveText::looksLikeValue(text) || namesProperty(label)) return false;
    bool const isQuoted = label.find_first_of("\"'`") != std::string_view::npos;
    bool const isCode = label.find('=') != std::string_view::npos && !isQuoted && !isSetting(candidate, label);
    bool const isNumber = std::all_of(text.begin(), text.end(), isDigit);
    bool const isPassword = lower(label[0]) == 'p' && lower(label[1]) != 'r'; // not "private key"
    if (isPassword && !isCode) return isQuoted || !SensitiveText::isNameOfSecret(text);
    if (isNumber) return isPassword; // "max_tokens: 128000"
    if (!isQuoted && SensitiveText::isName(text)) return false;
    return isNotWords(candidate) && (!isCode || text.find_first_of("()[]{}") == std::string_view::npos);
}

struct Group {
    std::string_view digits;
    char separator = 0; // before it
};

std::vector<Group> groupsOf(std::string_view text) {
    std::vector<Group> groups;
    for (std::size_t i = 0; i < text.size();) {
        if (!isDigit(text[i])) {
            ++i;
            continue;
        }
        auto end = i;
        while (end < text.size() && isDigit(text[end])) ++end;
        groups.push_back({text.substr(i, end - i), i > 0 ? text[i - 1] : '\0'});
        i = end;
    }
    return groups;
}

/// "Tel. 5557 0199": a word before the number says what it is.
bool hasPhoneLabel(std::string_view before) {
    constexpr std::string_view labels[] = {"tel",  "phone", "telephone", "telefon", "mobile", "mobil",
                                           "cell", "fax",   "whatsapp",  "sms",     "call",   "handy"};
    auto const last = std::find_if(before.rbegin(), before.rend(), isLetter);
    auto const first = std::find_if_not(last, before.rend(), isLetter);
    if (last - before.rbegin() > 3) return false;
    std::string word(first.base(), last.base());
    std::transform(word.begin(), word.end(), word.begin(), lower);
    return std::find(std::begin(labels), std::end(labels), word) != std::end(labels);
}

/// "415-555-0132" (North America), and what begins with a zero and is long enough, as calls inside most countries do.
bool isNationalNumber(std::vector<Group> const& groups, std::size_t digits) {
    constexpr std::size_t shortest = 9; // digits with the zero
    if (groups[0].digits[0] == '0') return digits >= shortest && groups[0].digits != "00" && groups[0].digits != "000";
    return groups.size() == 3 && groups[0].digits.size() == 3 && groups[1].digits.size() == 3 &&
           groups[2].digits.size() == 4 && groups[0].digits[0] >= '2' && groups[1].digits[0] >= '2' &&
           groups[1].separator == groups[2].separator;
}

/// Most groups of digits are no phone numbers: dates, versions, sums, parts of identifiers.
bool isPhoneNumber(SensitiveCandidate const& candidate) {
    constexpr std::size_t shortest = 7, longest = 15; // digits; ITU-T E.164
    auto const text = candidate.text();
    auto const count = digitsOf(text).size();
    if (count < shortest || count > longest) return false;
    if (text[0] == '+' || text.find('(') != std::string_view::npos) return true;
    auto const before = candidate.before(), after = candidate.after();
    auto const isPart = [](char c) { return isLetter(c) || c == '-' || c == '/' || c == ':' || c == '_' || c == '#'; };
    if (!after.empty() && isPart(after.front())) return false;
    if (hasPhoneLabel(before)) return true;
    if (!before.empty() && isPart(before.back())) return false;
    return isNationalNumber(groupsOf(text), count);
}

using enum SensitiveKind;
using Line = LineFacts const&;

bool hasLabelledValue(Line line) {
    return (line.has(':') || line.has('=')) &&
           hasAnyWord(line, {"pass", "pwd", "secret", "token", "key", "credential"});
}

constexpr SensitiveRule rules[] = {
    {privateKey, 0, R"(-----BEGIN [A-Z ]*PRIVATE KEY-----)", [](Line l) { return l.has("-----BEGIN "); }, nullptr},
    {apiKey, 0, R"(sk[-–]ant[-–][A-Za-z0-9_\-–]{16,})", [](Line l) { return l.has("sk") && l.has("ant"); }, nullptr},
    {apiKey, 0, R"(sk[-–](?:proj[-–]|svcacct[-–]|admin[-–])?[A-Za-z0-9_\-–]{20,})",
     [](Line l) {
         return hasAny(l, {"sk-", "sk–"});
     },
     isKeyByPrefix},
    {apiKey, 0, R"((?<![A-Z0-9])(?:AK[I1l]A|AS[I1l]A)[A-Z0-9]{16}(?![A-Za-z0-9]))",
     [](Line l) {
         return hasAny(l, {"AK", "AS"});
     },
     nullptr},
    {apiKey, 0, R"(gh[pousr]_[A-Za-z0-9]{30,})", [](Line l) { return l.has("gh") && l.has('_'); }, nullptr},
    {apiKey, 0, R"(github_pat_[A-Za-z0-9_]{30,})", [](Line l) { return l.has("github_pat_"); }, nullptr},
    {apiKey, 0, R"(glpat[-–][A-Za-z0-9_\-]{20,})", [](Line l) { return l.has("glpat"); }, nullptr},
    {apiKey, 0, R"(xox[abeprs][-–][A-Za-z0-9\-–]{10,})", [](Line l) { return l.has("xox"); }, nullptr},
    {apiKey, 0, R"(A[I1l]za[0-9A-Za-z_\-]{30,})", [](Line l) { return l.has("za"); }, nullptr},
    {apiKey, 0, R"((?:sk|rk|pk)_(?:live|test)_[0-9A-Za-z]{16,})",
     [](Line l) {
         return hasAny(l, {"_live_", "_test_"});
     },
     nullptr},
    {apiKey, 0, R"(whsec_[0-9A-Za-z]{20,})", [](Line l) { return l.has("whsec_"); }, nullptr},
    {apiKey, 0, R"(SG\.[A-Za-z0-9_\-]{16,}\.[A-Za-z0-9_\-]{16,})", [](Line l) { return l.has("SG."); }, nullptr},
    {apiKey, 0, R"((?:hf|npm|pypi|dop_v1|shpat|shpss)_[A-Za-z0-9_\-]{24,})",
     [](Line l) {
         return hasAny(l, {"hf_", "npm_", "pypi_", "dop_v1_", "shpat_", "shpss_"});
     },
     isNotWords},
    {token, 0, R"(eyJ[A-Za-z0-9_\-]{8,}\.eyJ[A-Za-z0-9_\-]{8,}\.[A-Za-z0-9_\-]{8,})",
     [](Line l) { return l.has("eyJ"); }, nullptr},
    {token, 0, R"(eyJ[A-Za-z0-9_\-]{24,})", [](Line l) { return l.has("eyJ"); }, nullptr},
    {token, 1, R"((?i)\bbearer\s+([A-Za-z0-9._\-~+/]{16,}=*))", [](Line l) { return l.hasWord("bearer"); },
     isCredential},
    {token, 1,
     R"((?i)[?&#](?:access_token|refresh_token|id_token|token|api_?key|key|sig|signature|secret|auth|code|password|pwd)=([^&\s#]{6,}))",
     [](Line l) { return l.has('=') && (l.has('?') || l.has('&') || l.has('#')); }, isSecretParameter},
    {token, 1, R"((?i)://[^\s/:@]+:([^\s/@]{4,})@)", [](Line l) { return l.has("://") && l.has('@'); },
     isPasswordOfAddress},
    {email, 0, R"([A-Za-z0-9._%+\-]+@[A-Za-z0-9\-]+(?:\.[A-Za-z0-9\-]+)*\.[A-Za-z]{2,})",
     [](Line l) { return l.has('@'); }, isMailAddress},
    {card, 0, R"((?<![\d.])(?<!\d[ \-])(?:\d[ \-]?){12,18}\d(?![\d.])(?![ \-]\d))",
     [](Line l) { return l.digits() >= 13 || !l.isASCII(); }, isCardNumber},
    {secret, 1,
     R"((?i)(?<![A-Za-z0-9])(?:password|passwd|passphrase|pwd|secret|token|api[_\- ]?key|apikey|access[_\- ]?key|auth[_\- ]?key|credentials?|private[_\- ]?key|client[_\- ]?secret|signing[_\- ]?key)[A-Za-z0-9_\-]*\s*[:=]\s*["'`]?([^\s"'`,;]{6,}))",
     hasLabelledValue, isLabelledSecret},
    {phone, 0,
     R"((?<![\w.])(?<!\d[\s\-])(?:\+\d{1,3}[\s.\-]?)?(?:\(\d{2,4}\)[\s.\-]?)?\d{2,4}(?:[\s.\-]\d{3,4}){1,2}(?![\w.])(?![\s\-]\d))",
     [](Line l) { return l.digits() >= 5 || !l.isASCII(); }, isPhoneNumber},
    {phone, 0, R"((?<![\w.])\+\d{10,14}(?![\w.]))", [](Line l) { return l.has('+'); }, nullptr},
};

}

LineFacts::LineFacts(std::string_view line) : line_(line) {
    for (char const c : line) {
        present_[static_cast<unsigned char>(c)] = true;
        if (isDigit(c)) ++digits_;
        if (static_cast<unsigned char>(c) >= 0x80) isASCII_ = false;
    }
}

bool LineFacts::hasWord(std::string_view lowerCase) const {
    if (!isASCII_) return true;
    if (!has(lowerCase.front()) && !has(static_cast<char>(lowerCase.front() - 32))) return false;
    auto const isSame = [](char a, char b) { return lower(a) == b; };
    return std::search(line_.begin(), line_.end(), lowerCase.begin(), lowerCase.end(), isSame) != line_.end();
}

std::span<SensitiveRule const> sensitiveRules() { return rules; }

}
