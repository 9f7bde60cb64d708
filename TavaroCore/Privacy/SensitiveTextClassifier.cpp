#include <TavaroCore/Privacy/SensitiveTextClassifier.h>

#include <TavaroCore/Privacy/CardNumbers.h>
#include <TavaroCore/Privacy/Characters.h>
#include <TavaroCore/Privacy/KeyFormats.h>
#include <TavaroCore/Privacy/Private/Claims.h>
#include <TavaroCore/Privacy/Private/CommandSecrets.h>
#include <TavaroCore/Privacy/Private/CustomTerms.h>
#include <TavaroCore/Privacy/Private/Expression.h>
#include <TavaroCore/Privacy/Private/KeyFiles.h>
#include <TavaroCore/Privacy/Private/LabelledValues.h>
#include <TavaroCore/Privacy/Private/LineWindow.h>
#include <TavaroCore/Privacy/Private/PhoneNumbers.h>
#include <TavaroCore/Privacy/Private/PlainLine.h>
#include <TavaroCore/Privacy/Private/SensitiveRules.h>
#include <TavaroCore/Privacy/Private/SensitiveText.h>
#include <TavaroCore/Privacy/Private/SpokenSecrets.h>
#include <TavaroCore/Privacy/Private/WrappedValues.h>

#include <array>
#include <bitset>
#include <cstdlib>

namespace tavaro {

namespace {

struct BuiltIn {
    SensitiveRule const* rule;
    std::unique_ptr<Expression> expression;
};

bool isTokenCharacter(char c) { return isAlphanumeric(c) || isAnyOf(c, "+/=_-.~"); }

/// Part of an address or a number is none; part of a key, a token or a password still is one.
Claims::Overlap overlapOf(SensitiveKind kind) {
    using enum SensitiveKind;
    bool const isWhole = kind == email || kind == phone || kind == card;
    return isWhole ? Claims::Overlap::dropped : Claims::Overlap::keepsRest;
}

struct NumberPlace {
    std::size_t start = 0; // bytes into the plain text
    std::size_t end = 0;
};

/// A piece of the line at hand, and its text as it is typed.
struct Piece {
    LineWindow const& window;
    PlainLine plain;
    LineFacts facts;      // of the line as it is
    LineFacts plainFacts; // as it is typed
    std::vector<NumberPlace> cards, phones;

    explicit Piece(LineWindow const& window)
        : window(window)
        , plain(window.text())
        , facts(window.text())
        , plainFacts(facts.isASCII() ? facts : LineFacts(plain.text())) {}

    /// False where the expressions of a kind cannot find anything: of numbers they find what was read, or less.
    bool mayHave(SensitiveKind kind) const {
        if (!facts.isASCII()) return true;
        if (kind == SensitiveKind::card) return !cards.empty();
        return kind != SensitiveKind::phone || !phones.empty();
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

    void search(LineWindow const& window);
    void searchRules(Piece const& piece, SensitiveKind kind);
    void searchKeyFiles(Piece const& piece);
    void searchKeys(Piece const& piece);
    void searchAddresses(Piece const& piece);
    void searchSecrets(Piece const& piece);
    void readNumbers(Piece& piece) const;
    void searchNumbers(Piece const& piece);
    void reserveEmbedded(Piece const& piece);
    void claim(LineWindow const& window, Expression::Match const& match, SensitiveKind kind, Claims::Overlap overlap);
    void claimPlain(SensitiveKind kind, Piece const& piece, std::size_t start, std::size_t end);
    bool finds(SensitiveKind kind) const { return kinds[static_cast<std::size_t>(kind)]; }

    std::bitset<16> kinds;
    Prefilter prefilter;
    std::vector<BuiltIn> builtIn;
    CustomTerms terms;
    Claims claims; // in the line at hand
};

SensitiveTextClassifier::State::State(RedactionSettings const& settings, Prefilter prefilter)
    : prefilter(prefilter)
    , terms(settings) {
    for (auto const kind : settings.kinds) kinds.set(static_cast<std::size_t>(kind));
    for (auto const& rule : sensitiveRules()) {
        if (!finds(rule.kind)) continue;
        builtIn.push_back({&rule, std::make_unique<Expression>(rule.expression)});
        if (!builtIn.back().expression->isValid()) std::abort(); // a mistake in the catalogue
    }
}

/// A value that the window's end cuts off goes on in the line to where its characters do.
void SensitiveTextClassifier::State::claim(LineWindow const& window, Expression::Match const& match, SensitiveKind kind,
                                           Claims::Overlap overlap) {
    if (!window.owns(match.wholeStart)) return;
    auto end = window.start + match.end();
    if (end == window.end) {
        while (end < window.line.size() && isTokenCharacter(window.line[end])) ++end;
    }
    claims.claim(kind, window.start + match.start, end, overlap);
}

void SensitiveTextClassifier::State::claimPlain(SensitiveKind kind, Piece const& piece, std::size_t start,
                                                std::size_t end) {
    auto const first = piece.plain.origin(start);
    claim(piece.window, {first, piece.plain.origin(end) - first, first}, kind, overlapOf(kind));
}

/// Pictures, fonts and maps of source code are long and look random; what is inside of them is not to be read.
void SensitiveTextClassifier::State::reserveEmbedded(Piece const& piece) {
    constexpr std::string_view mark = ";base64,";
    auto const text = piece.window.text();
    if (!piece.facts.has(mark)) return;
    auto const at = text.find(mark);
    if (text.rfind("data:", at) == text.npos) return;
    auto end = piece.window.start + at + mark.size();
    auto const start = end;
    while (end < piece.window.line.size() && isTokenCharacter(piece.window.line[end])) ++end;
    claims.reserve(start, end);
}

void SensitiveTextClassifier::State::searchRules(Piece const& piece, SensitiveKind kind) {
    if (prefilter == Prefilter::on && !piece.mayHave(kind)) return;
    auto const text = piece.window.text();
    // What the readers of labels and commands found is exact; the expression for secrets may run on behind it.
    auto const overlap = kind == SensitiveKind::secret ? Claims::Overlap::dropped : overlapOf(kind);
    for (auto& [rule, expression] : builtIn) {
        if (rule->kind != kind) continue;
        if (prefilter == Prefilter::on && rule->canMatch && !rule->canMatch(piece.facts)) continue;
        expression->forEachMatch(text, rule->group, [&, rule = rule](Expression::Match const& match) {
            SensitiveCandidate const candidate{text, match.start, match.length, match.wholeStart};
            if (!rule->isPrivate || rule->isPrivate(candidate)) {
                claim(piece.window, match, kind, overlap);
            } else if (rule->whenNot == SensitiveRule::WhenNot::isHarmless && piece.window.owns(match.wholeStart)) {
                claims.reserve(piece.window.start + match.wholeStart, piece.window.start + match.end() + 1);
            }
        });
    }
}

void SensitiveTextClassifier::State::searchKeyFiles(Piece const& piece) {
    if (!finds(SensitiveKind::privateKey)) return;
    auto const text = piece.plain.text();
    auto found = beginningOfKeyFile(text);
    if (!found) found = bodyOfKeyFile(text, KeyFilePlace::unknown);
    if (found) claimPlain(SensitiveKind::privateKey, piece, found->start, found->end);
}

/// Keys of services beyond the catalogue.
void SensitiveTextClassifier::State::searchKeys(Piece const& piece) {
    if (!finds(SensitiveKind::apiKey)) return;
    auto const text = piece.plain.text();
    forEachFormattedKey(
        text, [&](std::size_t start, std::size_t end) { claimPlain(SensitiveKind::apiKey, piece, start, end); });
}

/// Passwords of addresses that name no user: "redis://:…@host".
void SensitiveTextClassifier::State::searchAddresses(Piece const& piece) {
    constexpr std::string_view mark = "://:";
    if (!finds(SensitiveKind::token) || !piece.plainFacts.has(mark)) return;
    auto const text = piece.plain.text();
    auto const start = text.find(mark) + mark.size(), end = text.find_first_of(" /@", start);
    bool const isPassword = end != text.npos && text[end] == '@';
    if (!isPassword || SensitiveText::isPlaceholder(text.substr(start, end - start))) return;
    claimPlain(SensitiveKind::token, piece, start, end);
}

void SensitiveTextClassifier::State::searchSecrets(Piece const& piece) {
    auto const text = piece.plain.text();
    auto const words = wordsOf(text);
    forEachLabelledSecret(text, words, [&](LabelledValue const& value) {
        claimPlain(SensitiveKind::secret, piece, value.start, value.end);
    });
    auto const found = [&](std::size_t start, std::size_t end) {
        claimPlain(SensitiveKind::secret, piece, start, end);
    };
    forEachCommandSecret(piece.plainFacts, found);
    forEachSpokenSecret(text, found);
}

/// Reads the numbers before the expressions for them are tried.
void SensitiveTextClassifier::State::readNumbers(Piece& piece) const {
    constexpr std::size_t fewestOfCard = 10, fewestOfPhone = 7; // digits; letters may be read for the others
    auto const text = piece.plain.text();
    if (finds(SensitiveKind::card) && piece.facts.digits() >= fewestOfCard) {
        forEachCardNumber(text, [&](std::size_t start, std::size_t end) { piece.cards.push_back({start, end}); });
    }
    if (finds(SensitiveKind::phone) && piece.facts.digits() >= fewestOfPhone) {
        forEachPhoneNumber(text, [&](std::size_t start, std::size_t end) { piece.phones.push_back({start, end}); });
    }
}

void SensitiveTextClassifier::State::searchNumbers(Piece const& piece) {
    for (auto const& card : piece.cards) claimPlain(SensitiveKind::card, piece, card.start, card.end);
    for (auto const& phone : piece.phones) claimPlain(SensitiveKind::phone, piece, phone.start, phone.end);
}

void SensitiveTextClassifier::State::search(LineWindow const& window) {
    using enum SensitiveKind;
    Piece piece(window);
    readNumbers(piece);
    reserveEmbedded(piece);
    for (auto const kind : {privateKey, apiKey}) searchRules(piece, kind);
    searchKeyFiles(piece);
    searchRules(piece, token);
    searchKeys(piece);
    searchAddresses(piece);
    for (auto const kind : {email, card}) searchRules(piece, kind);
    if (finds(secret)) searchSecrets(piece);
    for (auto const kind : {secret, phone}) searchRules(piece, kind);
    searchNumbers(piece);
    terms.search(window, claims);
}

SensitiveTextClassifier::SensitiveTextClassifier(RedactionSettings const& settings, Prefilter prefilter)
    : state_(std::make_unique<State>(settings, prefilter)) {}

SensitiveTextClassifier::~SensitiveTextClassifier() = default;

std::vector<SensitiveMatch> SensitiveTextClassifier::matches(std::string_view line) {
    LinesAbove none;
    return matches(line, none);
}

std::vector<SensitiveMatch> SensitiveTextClassifier::matches(std::string_view line, LinesAbove& above) {
    state_->terms.beginLine();
    PlainLine const plain(line.substr(0, longestWrapped));
    bool const isPublic = above.expected == LinesAbove::Expected::bodyOfPublicFile &&
                          bodyOfKeyFile(plain.text(), KeyFilePlace::inside).has_value();
    if (isPublic) state_->claims.reserve(0, line.size());
    for (std::optional<LineWindow> window(line); window; window = window->next()) state_->search(*window);
    if (auto const value = valueExpected(plain.text(), above); value && state_->finds(value->kind)) {
        state_->claims.claim(value->kind, plain.origin(value->start), plain.origin(value->end),
                             Claims::Overlap::keepsRest);
    }
    auto matches = state_->claims.take();
    auto const endsWithSecret =
        !matches.empty() && isSecretThatWraps(line.substr(matches.back().start), matches.back().length);
    above = expectedBelow(plain.text(), above, endsWithSecret);
    return matches;
}

std::vector<std::string> const& SensitiveTextClassifier::warnings() const { return state_->terms.warnings(); }

}
