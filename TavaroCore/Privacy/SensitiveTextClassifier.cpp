#include <TavaroCore/Privacy/SensitiveTextClassifier.h>

#include <TavaroCore/Privacy/Private/SensitiveRules.h>
#include <TavaroCore/Privacy/Private/SensitiveText.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <limits>
#include <optional>
#include <utility>

#include <fmt/format.h>
#include <unicode/regex.h>
#include <unicode/utext.h>

namespace tavaro {

namespace {

constexpr std::size_t longestWindow = 1024; // bytes of a line that are looked at together
constexpr std::size_t windowOverlap = 256;
constexpr std::size_t windowLeadIn = 64;     // bytes at a window's start that only are what a match looks back on
constexpr std::int32_t timeLimit = 150;      // steps of the matcher in a window, each less than a millisecond
constexpr int stepsOfLine = 600;             // that a custom pattern may take on one line
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

/// A piece of a line that is searched together. Neighbours overlap; each start of a match belongs to one of them, the
/// one that sees enough of the line around it.
struct Window {
    std::string_view line;
    std::size_t start = 0;
    std::size_t end = 0;
    std::size_t firstOwn = 0; // bytes into the line, as all here
    std::size_t endOfOwn = 0;
    std::size_t endBefore = 0; // of the window before

    explicit Window(std::string_view line) : line(line) { setEnd(); }

    std::string_view text() const { return line.substr(start, end - start); }
    bool owns(std::size_t inWindow) const { return start + inWindow >= firstOwn && start + inWindow < endOfOwn; }

    std::optional<Window> next() const {
        if (end == line.size()) return std::nullopt;
        auto window = *this;
        window.start = startOfCharacter(end - windowOverlap);
        window.firstOwn = endOfOwn;
        window.endBefore = end;
        window.setEnd();
        return window;
    }

private:
    void setEnd() {
        bool const isLast = line.size() - start <= longestWindow;
        end = isLast ? line.size() : startOfCharacter(start + longestWindow);
        endOfOwn = isLast ? end : end - windowOverlap + windowLeadIn;
    }

    /// Back from a byte within a character; a flood of stray bytes has none.
    std::size_t startOfCharacter(std::size_t at) const {
        for (std::size_t back = 0; back < 4; ++back) {
            if ((line[at - back] & 0xC0) != 0x80) return at - back;
        }
        return at;
    }
};

class Expression {
public:
    Expression(std::string_view pattern, UErrorCode& code)
        : matcher_(icu::UnicodeString::fromUTF8({pattern.data(), static_cast<std::int32_t>(pattern.size())}), 0, code) {
        if (U_FAILURE(code)) return;
        matcher_.setTimeLimit(timeLimit, code);
        matcher_.setStackLimit(stackLimit, code);
        matcher_.setMatchCallback(countStep, this, code);
    }

    /// Steps from here on, over several texts, after which the matcher gives up.
    void allow(int steps) { stepsLeft_ = steps; }

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
    static UBool U_CALLCONV countStep(void const* self, std::int32_t) {
        return --static_cast<Expression*>(const_cast<void*>(self))->stepsLeft_ > 0;
    }

    int stepsLeft_ = std::numeric_limits<int>::max();
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

/// A line folded piece by piece, with the way back to its bytes.
struct FoldedLine {
    std::string text;
    std::vector<std::size_t> origin; // of each folded byte, the start of its piece of the line; one more at the end

    explicit FoldedLine(std::string_view line) {
        for (std::size_t i = 0; i < line.size();) {
            auto const next = i + SensitiveText::lengthOfFirstPiece(line.substr(i));
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

    /// Where the piece ends that a folded byte comes from.
    std::size_t endOfPiece(std::size_t at) const {
        return *std::upper_bound(origin.begin() + static_cast<std::ptrdiff_t>(at), origin.end(), origin[at]);
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

    void search(Window const& window);
    void searchTokens(Window const& window);
    void searchQuotedValues(Window const& window);
    void searchWords(Window const& window);
    void searchPatterns(Window const& window);
    void claim(SensitiveKind kind, std::size_t start, std::size_t end);
    void claimUncut(SensitiveKind kind, Window const& window, Span const& span);
    void claimByPattern(Window const& window, Span const& span);

    bool findsSecrets = false;
    Prefilter prefilter;
    std::vector<BuiltIn> builtIn;
    std::vector<std::string> words; // folded
    std::vector<CustomPattern> patterns;
    std::vector<std::string> warnings;
    std::vector<SensitiveMatch> found; // in the line at hand, in order, apart from each other
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

/// Takes the finding unless an earlier one has some of its text.
void SensitiveTextClassifier::State::claim(SensitiveKind kind, std::size_t start, std::size_t end) {
    if (start >= end) return;
    auto const next = std::partition_point(found.begin(), found.end(), [&](auto const& f) { return f.end() <= start; });
    if (next != found.end() && next->start < end) return;
    found.insert(next, {kind, start, end - start, labelOf(kind)});
}

/// A value that the window's end cuts off goes on in the line to where its characters do.
void SensitiveTextClassifier::State::claimUncut(SensitiveKind kind, Window const& window, Span const& span) {
    if (!window.owns(span.wholeStart)) return;
    auto end = window.start + span.start + span.length;
    if (end == window.end) {
        while (end < window.line.size() && isTokenCharacter(window.line[end])) ++end;
    }
    claim(kind, window.start + span.start, end);
}

/// What a pattern finds from the window before on continues the finding there.
void SensitiveTextClassifier::State::claimByPattern(Window const& window, Span const& span) {
    auto const start = window.start + span.start, end = start + span.length;
    if (window.owns(span.start)) return claim(SensitiveKind::custom, start, end);
    if (start >= window.firstOwn || end <= window.firstOwn) return;
    auto const next = std::partition_point(found.begin(), found.end(), [&](auto const& f) { return f.end() <= start; });
    if (next == found.end() || next->kind != SensitiveKind::custom || next->end() != window.endBefore) return;
    auto const limit = std::next(next) == found.end() ? end : std::min(end, std::next(next)->start);
    next->length = std::max(next->end(), limit) - next->start;
}

void SensitiveTextClassifier::State::search(Window const& window) {
    auto const text = window.text();
    LineFacts const facts(text);
    for (auto& [rule, expression] : builtIn) {
        if (prefilter == Prefilter::on && rule->canMatch && !rule->canMatch(facts)) continue;
        expression->forEachMatch(text, rule->group, [&, rule = rule](Span const& span) {
            SensitiveCandidate const candidate{text, span.start, span.length, span.wholeStart};
            if (!rule->isPrivate || rule->isPrivate(candidate)) claimUncut(rule->kind, window, span);
        });
    }
    if (findsSecrets && facts.has('"') && facts.has(':')) searchQuotedValues(window);
    if (findsSecrets) searchTokens(window);
    if (!words.empty()) searchWords(window);
    searchPatterns(window);
}

/// Random tokens right behind a label, where no colon says that they are its value.
void SensitiveTextClassifier::State::searchTokens(Window const& window) {
    auto const text = window.text();
    for (std::size_t i = 0; i < text.size();) {
        if (!isTokenCharacter(text[i])) {
            ++i;
            continue;
        }
        auto start = i;
        while (i < text.size() && isTokenCharacter(text[i])) ++i;
        auto const last = text.substr(0, i).find_last_not_of('=');
        auto const sign = text.substr(0, last + 1).rfind('='); // "AccountKey=…==" holds its label
        if (sign != std::string_view::npos && sign >= start) start = sign + 1;
        auto const token = text.substr(start, i - start);
        if (token.size() < shortestToken || !SensitiveText::looksRandom(token)) continue;
        if (SensitiveText::isSecretLabel(text.substr(0, start)))
            claimUncut(SensitiveKind::secret, window, {start, token.size(), start});
    }
}

/// `"password": "…"` as in JSON: here quotes say where a value ends, so it need not look random.
void SensitiveTextClassifier::State::searchQuotedValues(Window const& window) {
    constexpr std::size_t shortestValue = 6;
    auto const text = window.text();
    auto const skipBlanks = [&](std::size_t at) { return std::min(text.find_first_not_of(" \t", at), text.size()); };
    for (auto open = text.find('"'); open != std::string_view::npos;) {
        auto const close = endOfQuoted(text, open + 1);
        auto const label = text.substr(open + 1, close - open - 1);
        auto const colon = skipBlanks(std::min(close + 1, text.size()));
        auto const quote = colon < text.size() && text[colon] == ':' ? skipBlanks(colon + 1) : text.size();
        if (quote == text.size() || text[quote] != '"') {
            open = text.find('"', close); // a stray quote may have gone before
            continue;
        }
        auto const end = endOfQuoted(text, quote + 1);
        auto const value = text.substr(quote + 1, end - quote - 1);
        if (value.size() >= shortestValue && isQuotedSecret(label, value)) {
            claimUncut(SensitiveKind::secret, window, {quote + 1, value.size(), open});
        }
        open = text.find('"', end + 1);
    }
}

void SensitiveTextClassifier::State::searchWords(Window const& window) {
    FoldedLine const line(window.text());
    auto const isPartOfWord = [&](std::size_t at) {
        auto const c = static_cast<unsigned char>(line.text[at]);
        return c >= 0x80 || std::isalnum(c);
    };
    for (auto const& word : words) {
        for (auto at = line.text.find(word); at != std::string::npos; at = line.text.find(word, at + 1)) {
            auto const end = at + word.size();
            bool const isInside = (at > 0 && isPartOfWord(at - 1)) || (end < line.text.size() && isPartOfWord(end));
            if (isInside && word.size() < substringWord) continue;
            if (!window.owns(line.origin[at])) continue;
            claim(SensitiveKind::custom, window.start + line.origin[at], window.start + line.endOfPiece(end - 1));
        }
    }
}

void SensitiveTextClassifier::State::searchPatterns(Window const& window) {
    for (auto& pattern : patterns) {
        if (pattern.isGivenUpHere || pattern.givenUp >= mostGivenUp) continue;
        bool const ended =
            pattern.expression->forEachMatch(window.text(), 0, [&](Span const& span) { claimByPattern(window, span); });
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
    state_->found.clear();
    for (auto& pattern : state_->patterns) {
        pattern.isGivenUpHere = false;
        pattern.expression->allow(stepsOfLine);
    }
    for (std::optional<Window> window(line); window; window = window->next()) state_->search(*window);
    return std::exchange(state_->found, {});
}

std::vector<std::string> const& SensitiveTextClassifier::warnings() const { return state_->warnings; }

}
