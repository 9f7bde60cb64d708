#include <TavaroVoice/Speaking/Private/SpokenText.h>

#include <TavaroVoice/Errors/VoiceError.h>

#include <TavaroCore/Errors/Excerpt.h>

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <memory>
#include <string_view>

#include <unicode/translit.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace tavaro {

namespace {

using Text = icu::UnicodeString;

constexpr std::size_t mostWordsOfPhrase = 50;
constexpr std::size_t wordsBeforeComma = 25; // after so many, a comma ends a phrase
constexpr std::size_t longestWord = 60;      // of ASCII

bool isBlank(UChar32 c) { return u_isUWhiteSpace(c) || (u_charType(c) == U_CONTROL_CHAR); }

/// Marks without a width, of direction, and what stands for broken bytes.
bool isNothing(UChar32 c) { return u_charType(c) == U_FORMAT_CHAR || c == 0xFFFD || u_charType(c) == U_SURROGATE; }

bool isDash(UChar32 c) { return u_charType(c) == U_DASH_PUNCTUATION || c == 0x2026; }

/// Whether an engine makes words of it.
bool isSaid(UChar32 c) {
    constexpr std::u32string_view signs = U"&@%+=#$€£";
    return u_isalnum(c) || signs.find(static_cast<char32_t>(c)) != std::u32string_view::npos;
}

/// Punctuation that only makes a pause, in any engine.
bool isPause(UChar32 c) {
    constexpr std::u32string_view pauses = U"'’.,;:!?-/。、，！？：；…";
    return pauses.find(static_cast<char32_t>(c)) != std::u32string_view::npos;
}

template<class Visit> void forEachCharacter(Text const& text, Visit const& visit) {
    for (std::int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) visit(text.char32At(at));
}

std::vector<Text> wordsOf(Text const& text) {
    std::vector<Text> words(1);
    forEachCharacter(text, [&](UChar32 c) {
        if (isBlank(c)) {
            if (!words.back().isEmpty()) words.emplace_back();
        } else if (!isNothing(c))
            words.back().append(c);
    });
    if (words.back().isEmpty()) words.pop_back();
    return words;
}

class Transcription {
public:
    Transcription() {
        auto code = U_ZERO_ERROR;
        transliterator_.reset(icu::Transliterator::createInstance("Any-Latin; Latin-ASCII", UTRANS_FORWARD, code));
    }

    void apply(Text& text) const {
        if (transliterator_) transliterator_->transliterate(text);
    }

private:
    std::unique_ptr<icu::Transliterator> transliterator_;
};

bool isASCII(Text const& text) {
    bool is = true;
    forEachCharacter(text, [&](UChar32 c) { is = is && c < 0x80; });
    return is;
}

/// Runs of marks that are not said become one hyphen inside a word, and nothing at its ends.
Text cleaned(Text const& word, Letters letters) {
    Text clean;
    bool isInterrupted = false;
    forEachCharacter(word, [&](UChar32 c) {
        bool const isKept = (isSaid(c) || isPause(c) || u_getCombiningClass(c) != 0 ||
                             u_charType(c) == U_NON_SPACING_MARK || u_charType(c) == U_COMBINING_SPACING_MARK) &&
                            (letters == Letters::all || c < 0x80);
        if (isKept && isInterrupted && !clean.isEmpty() && isSaid(c)) clean.append(UChar32('-'));
        if (isKept) clean.append(c);
        isInterrupted = !isKept;
    });
    return clean;
}

std::string utf8(Text const& text) {
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

bool hasSaid(Text const& text) {
    bool has = false;
    forEachCharacter(text, [&](UChar32 c) { has = has || isSaid(c); });
    return has;
}

/// A word, or what is left of a text without spaces.
class Words {
public:
    Words(Text const& text, Letters letters) : letters_(letters) {
        for (auto const& word : wordsOf(text)) add(word);
    }
    SpokenPhrase take() { return std::move(words_); }

private:
    void add(Text const& shown) {
        auto word = shown;
        if (letters_ == Letters::ascii && !isASCII(word)) {
            if (!transcription_) transcription_ = std::make_unique<Transcription>();
            transcription_->apply(word);
        }
        auto const clean = cleaned(word, letters_);
        if (!hasSaid(clean)) {
            if (!shown.isEmpty() && isDash(shown.char32At(0))) pause();
            return;
        }
        split(utf8(shown), utf8(clean));
    }

    /// Engines keep a long time at letters without an end.
    void split(std::string shown, std::string const& spoken) {
        if (letters_ == Letters::all || spoken.size() <= longestWord) {
            words_.push_back({std::move(shown), spoken});
            return;
        }
        for (std::size_t at = 0; at < spoken.size(); at += longestWord) {
            auto const piece = spoken.substr(at, longestWord);
            words_.push_back({piece, piece});
        }
    }

    void pause() {
        if (words_.empty() || isPause(static_cast<unsigned char>(words_.back().spoken.back()))) return;
        words_.back().spoken += ',';
    }

    Letters const letters_;
    std::unique_ptr<Transcription> transcription_;
    SpokenPhrase words_;
};

bool endsWithAny(std::string_view word, std::initializer_list<std::string_view> ends) {
    return std::ranges::any_of(ends, [&](std::string_view end) { return word.ends_with(end); });
}

bool isAbbreviation(std::string_view word) {
    constexpr std::array<std::string_view, 10> known{"Mr.", "Mrs.", "Ms.",  "Dr.",  "Prof.",
                                                     "St.", "vs.",  "etc.", "e.g.", "i.e."};
    return std::ranges::find(known, word) != known.end();
}

bool endsPhrase(SpokenPhrase const& phrase, SpokenWordText const& next) {
    auto const& last = phrase.back().spoken;
    if (phrase.size() >= mostWordsOfPhrase) return true;
    if (endsWithAny(last, {"!", "?", "。", "！", "？"})) return true;
    if (last.ends_with('.')) return !isAbbreviation(last) && !(next.spoken[0] >= 'a' && next.spoken[0] <= 'z');
    return phrase.size() >= wordsBeforeComma && endsWithAny(last, {",", ";", ":"});
}

[[noreturn]] void failLong(std::int32_t characters) {
    throw VoiceError(VoiceError::Kind::tooLong,
                     fmt::format("A line has {} characters, and at most {} can be spoken at once; divide it.",
                                 characters, mostSpokenCharacters));
}

[[noreturn]] void failEmpty(std::string const& text) {
    auto const shown = excerpt(text, 60);
    throw VoiceError(VoiceError::Kind::nothingToSay, shown.empty()
                                                         ? "There is nothing to say: the line is empty."
                                                         : fmt::format("There is nothing to say in “{}”.", shown));
}

}

std::vector<SpokenPhrase> spokenPhrases(std::string const& text, Letters letters) {
    auto const whole = Text::fromUTF8(text);
    auto const characters = whole.countChar32();
    if (static_cast<std::size_t>(characters) > mostSpokenCharacters) failLong(characters);
    std::vector<SpokenPhrase> phrases;
    for (auto& word : Words(whole, letters).take()) {
        if (phrases.empty() || endsPhrase(phrases.back(), word)) phrases.emplace_back();
        phrases.back().push_back(std::move(word));
    }
    if (phrases.empty()) failEmpty(text);
    return phrases;
}

bool canBeSaid(std::string_view text) {
    return hasSaid(Text::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size()))));
}

std::string spokenText(SpokenPhrase const& phrase) {
    std::string text;
    for (auto const& word : phrase) {
        if (!text.empty()) text += ' ';
        text += word.spoken;
    }
    return text;
}

}
