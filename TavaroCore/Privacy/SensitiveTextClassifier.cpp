#include <TavaroCore/Privacy/SensitiveTextClassifier.h>

#include <TavaroCore/Privacy/SensitiveRules.h>
#include <TavaroCore/Privacy/SensitiveText.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>

#include <fmt/format.h>
#include <unicode/regex.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

namespace tavaro {

namespace {

constexpr std::size_t longestWindow = 1024; // bytes of a line that are looked at together
constexpr std::size_t windowOverlap = 256;
constexpr std::int32_t timeLimit = 40;       // steps of the matcher; about as many milliseconds
constexpr std::int32_t stackLimit = 1 << 20; // bytes
constexpr int mostGivenUp = 5;               // lines; a pattern that is slow on more is left out
constexpr std::size_t shortestToken = 20;
constexpr std::size_t substringWord = 4; // characters; shorter custom words count only as whole words

/// A UTF-8 text as the matcher reads it; positions are bytes.
class Text {
public:
    explicit Text(std::string_view utf8) {
        UErrorCode code = U_ZERO_ERROR;
        utext_openUTF8(&text_, utf8.data(), static_cast<std::int64_t>(utf8.size()), &code);
    }
    ~Text() { utext_close(&text_); }
    Text(Text const&) = delete;
    Text& operator=(Text const&) = delete;
    UText* get() { return &text_; }

private:
    UText text_ = UTEXT_INITIALIZER;
};

struct Span {
    std::size_t start = 0;
    std::size_t length = 0;
    std::size_t wholeStart = 0;
};

class Expression {
public:
    Expression(std::string_view pattern, UErrorCode& code)
        : matcher_(icu::UnicodeString::fromUTF8({pattern.data(), static_cast<std::int32_t>(pattern.size())}), 0, code) {
        if (U_FAILURE(code)) return;
        matcher_.setTimeLimit(timeLimit, code);
        matcher_.setStackLimit(stackLimit, code);
    }

    /// Calls `visit` for every match, from left to right. False when the matcher gave up.
    template<class Visit> bool forEachMatch(std::string_view text, int group, Visit&& visit) {
        Text utf8(text);
        matcher_.reset(utf8.get());
        UErrorCode code = U_ZERO_ERROR;
        while (matcher_.find(code) && U_SUCCESS(code)) {
            auto const start = matcher_.start64(group, code), end = matcher_.end64(group, code);
            if (U_FAILURE(code) || start < 0 || end <= start) continue;
            visit(Span{static_cast<std::size_t>(start), static_cast<std::size_t>(end - start),
                       static_cast<std::size_t>(matcher_.start64(0, code))});
        }
        return U_SUCCESS(code);
    }

private:
    icu::RegexMatcher matcher_;
};

struct BuiltIn {
    SensitiveRule const* rule;
    std::unique_ptr<Expression> expression;
};

struct CustomPattern {
    std::string source;
    std::unique_ptr<Expression> expression;
    int givenUp = 0;            // lines on which it took too long
    bool isGivenUpHere = false; // on the line at hand
};

std::string labelOf(SensitiveKind kind) {
    return kind == SensitiveKind::privateKey ? "-----BEGIN … PRIVATE KEY-----" : std::string(displayName(kind));
}

bool isTokenCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("+/=_-.~").find(c) != std::string_view::npos;
}

/// Where the token goes on to that reaches the position.
std::size_t endOfToken(std::string_view line, std::size_t position) {
    while (position < line.size() && isTokenCharacter(line[position])) ++position;
    return position;
}

/// Where the quote that ends a text from `start` stands, or the end of the line.
std::size_t endOfQuoted(std::string_view line, std::size_t start) {
    for (auto i = start; i < line.size(); ++i) {
        if (line[i] == '"') return i;
        if (line[i] == '\\') ++i;
    }
    return line.size();
}

bool isQuotedSecret(std::string_view label, std::string_view value) {
    if (!SensitiveText::isSecretLabel(label) || !SensitiveText::looksLikeValue(value)) return false;
    if (value.find_first_of(" \t") != std::string_view::npos || SensitiveText::isNameOfSecret(value)) return false;
    bool const isPassword = label.find("ass") != std::string_view::npos || label.find("ASS") != std::string_view::npos;
    return isPassword || !SensitiveText::isName(value);
}

/// Where the character that starts at `start` ends, with the marks that combine with it.
std::size_t endOfCharacter(std::string_view line, std::size_t start) {
    auto const size = static_cast<std::int32_t>(line.size());
    auto end = static_cast<std::int32_t>(start);
    UChar32 c = 0;
    U8_NEXT(line.data(), end, size, c);
    for (auto next = end; next < size; end = next) {
        U8_NEXT(line.data(), next, size, c);
        if (c < 0 || u_getCombiningClass(c) == 0) break;
    }
    return static_cast<std::size_t>(end);
}

/// A line folded piece by piece, with the way back to its bytes.
struct FoldedLine {
    std::string text;
    std::vector<std::size_t>
        origin; // of each folded byte, the first byte of its character in the line; one more at the end

    explicit FoldedLine(std::string_view line) {
        for (std::size_t i = 0; i < line.size();) {
            auto const next = endOfCharacter(line, i);
            auto const folded = SensitiveText::foldLookAlikes(line.substr(i, next - i));
            for (char const c : folded) {
                if (c == ' ' && !text.empty() && text.back() == ' ') continue;
                text += c;
                origin.push_back(i);
            }
            i = next;
        }
        origin.push_back(line.size());
    }
};

}

std::string_view displayName(SensitiveKind kind) {
    constexpr std::array<std::string_view, 9> names{"Email",       "Phone number", "API key", "Token", "Private key",
                                                    "Card number", "Secret",       "Custom",  "Name"};
    return names[static_cast<std::size_t>(kind)];
}

struct SensitiveTextClassifier::State {
    State(RedactionSettings const& settings, Prefilter prefilter);

    void search(std::string_view window, std::size_t offset);
    void searchTokens(std::string_view window, std::size_t offset);
    void searchQuotedValues(std::string_view window, std::size_t offset);
    void searchWords(std::string_view window, std::size_t offset);
    void searchPatterns(std::string_view window, std::size_t offset);
    void claim(SensitiveKind kind, std::size_t start, std::size_t length);

    bool findsSecrets = false;
    Prefilter prefilter;
    std::vector<BuiltIn> builtIn;
    std::vector<std::string> words; // folded
    std::vector<CustomPattern> patterns;
    std::vector<std::string> warnings;
    std::string_view line;             // at hand
    std::size_t windowEnd = 0;         // of the piece of it that is looked at
    std::vector<SensitiveMatch> found; // in the line, apart from each other
};

SensitiveTextClassifier::State::State(RedactionSettings const& settings, Prefilter prefilter)
    : findsSecrets(settings.kinds.contains(SensitiveKind::secret))
    , prefilter(prefilter) {
    for (auto const& rule : sensitiveRules()) {
        if (!settings.kinds.contains(rule.kind)) continue;
        UErrorCode code = U_ZERO_ERROR;
        builtIn.push_back({&rule, std::make_unique<Expression>(rule.expression, code)});
        if (U_FAILURE(code)) std::abort(); // a mistake in the catalogue
    }
    for (auto const& word : settings.customWords) {
        auto folded = SensitiveText::foldLookAlikes(word);
        while (folded.starts_with(' ')) folded.erase(0, 1);
        while (folded.ends_with(' ')) folded.pop_back();
        if (!folded.empty()) words.push_back(std::move(folded));
    }
    for (auto const& source : settings.customPatterns) {
        UErrorCode code = U_ZERO_ERROR;
        auto expression = std::make_unique<Expression>(source, code);
        if (U_FAILURE(code)) {
            warnings.push_back(fmt::format("The pattern “{}” is left out: it is not a regular expression.", source));
        } else {
            patterns.push_back({source, std::move(expression)});
        }
    }
}

/// Takes the finding unless an earlier one has some of its text. One that reaches the end of its window goes on behind
/// it, as far as the token does.
void SensitiveTextClassifier::State::claim(SensitiveKind kind, std::size_t start, std::size_t length) {
    bool const isCutOff = start + length == windowEnd && kind != SensitiveKind::custom;
    if (isCutOff) length = endOfToken(line, windowEnd) - start;
    auto const overlaps = [&](SensitiveMatch const& other) {
        return start < other.end() && other.start < start + length;
    };
    if (length > 0 && std::none_of(found.begin(), found.end(), overlaps)) {
        found.push_back({kind, start, length, labelOf(kind)});
    }
}

void SensitiveTextClassifier::State::search(std::string_view window, std::size_t offset) {
    LineFacts const facts(window);
    windowEnd = offset + window.size();
    for (auto& [rule, expression] : builtIn) {
        if (prefilter == Prefilter::on && rule->canMatch && !rule->canMatch(facts)) continue;
        expression->forEachMatch(window, rule->group, [&, rule = rule](Span const& span) {
            SensitiveCandidate const candidate{window, span.start, span.length, span.wholeStart};
            if (rule->isPrivate && !rule->isPrivate(candidate)) return;
            claim(rule->kind, offset + span.start, span.length);
        });
    }
    if (findsSecrets && facts.has('"') && facts.has(':')) searchQuotedValues(window, offset);
    if (findsSecrets) searchTokens(window, offset);
    if (!words.empty()) searchWords(window, offset);
    searchPatterns(window, offset);
}

/// Random tokens right behind a label, where no colon says that they are its value.
void SensitiveTextClassifier::State::searchTokens(std::string_view window, std::size_t offset) {
    for (std::size_t i = 0; i < window.size();) {
        if (!isTokenCharacter(window[i])) {
            ++i;
            continue;
        }
        auto start = i;
        i = endOfToken(window, i);
        auto const last = window.substr(0, i).find_last_not_of('=');
        auto const sign = window.substr(0, last + 1).rfind('='); // "AccountKey=…==" holds its label
        if (sign != std::string_view::npos && sign >= start) start = sign + 1;
        auto const token = window.substr(start, i - start);
        if (token.size() < shortestToken || !SensitiveText::looksRandom(token)) continue;
        if (SensitiveText::isSecretLabel(window.substr(0, start)))
            claim(SensitiveKind::secret, offset + start, token.size());
    }
}

/// `"password": "…"` as in JSON: here quotes say where a value ends, so it need not look random.
void SensitiveTextClassifier::State::searchQuotedValues(std::string_view window, std::size_t offset) {
    constexpr std::size_t shortestValue = 6;
    auto const skipBlanks = [&](std::size_t at) {
        return std::min(window.find_first_not_of(" \t", at), window.size());
    };
    for (auto open = window.find('"'); open != std::string_view::npos;) {
        auto const close = endOfQuoted(window, open + 1);
        auto const label = window.substr(open + 1, close - open - 1);
        auto const colon = skipBlanks(std::min(close + 1, window.size()));
        auto const quote = colon < window.size() && window[colon] == ':' ? skipBlanks(colon + 1) : window.size();
        if (quote == window.size() || window[quote] != '"') {
            open = window.find('"', close + 1);
            continue;
        }
        auto const end = endOfQuoted(window, quote + 1);
        auto const value = window.substr(quote + 1, end - quote - 1);
        if (value.size() >= shortestValue && isQuotedSecret(label, value))
            claim(SensitiveKind::secret, offset + quote + 1, value.size());
        open = window.find('"', end + 1);
    }
}

void SensitiveTextClassifier::State::searchWords(std::string_view window, std::size_t offset) {
    FoldedLine const line(window);
    auto const isPartOfWord = [&](std::size_t at) {
        auto const c = static_cast<unsigned char>(line.text[at]);
        return c >= 0x80 || std::isalnum(c);
    };
    for (auto const& word : words) {
        for (auto at = line.text.find(word); at != std::string::npos; at = line.text.find(word, at + 1)) {
            auto const end = at + word.size();
            bool const isInside = (at > 0 && isPartOfWord(at - 1)) || (end < line.text.size() && isPartOfWord(end));
            if (isInside && word.size() < substringWord) continue;
            claim(SensitiveKind::custom, offset + line.origin[at], line.origin[end] - line.origin[at]);
        }
    }
}

void SensitiveTextClassifier::State::searchPatterns(std::string_view window, std::size_t offset) {
    for (auto& pattern : patterns) {
        if (pattern.isGivenUpHere || pattern.givenUp >= mostGivenUp) continue;
        bool const ended = pattern.expression->forEachMatch(
            window, 0, [&](Span const& span) { claim(SensitiveKind::custom, offset + span.start, span.length); });
        if (ended) continue;
        pattern.isGivenUpHere = true;
        if (pattern.givenUp++ > 0) continue;
        warnings.push_back(
            fmt::format("The pattern “{}” takes too long on some lines and is given up there.", pattern.source));
    }
}

SensitiveTextClassifier::SensitiveTextClassifier(RedactionSettings const& settings, Prefilter prefilter)
    : state_(std::make_unique<State>(settings, prefilter)) {}

SensitiveTextClassifier::~SensitiveTextClassifier() = default;

std::vector<SensitiveMatch> SensitiveTextClassifier::matches(std::string_view line) {
    state_->line = line;
    state_->found.clear();
    for (auto& pattern : state_->patterns) pattern.isGivenUpHere = false;
    auto const isContinuation = [&](std::size_t at) { return at < line.size() && (line[at] & 0xC0) == 0x80; };
    for (std::size_t start = 0;;) {
        auto end = std::min(line.size(), start + longestWindow);
        while (isContinuation(end)) ++end;
        state_->search(line.substr(start, end - start), start);
        if (end == line.size()) break;
        start = end - windowOverlap;
        while (isContinuation(start)) ++start;
    }
    auto result = std::move(state_->found);
    state_->found = {};
    std::sort(result.begin(), result.end(), [](auto const& a, auto const& b) { return a.start < b.start; });
    return result;
}

std::vector<std::string> const& SensitiveTextClassifier::warnings() const { return state_->warnings; }

}
