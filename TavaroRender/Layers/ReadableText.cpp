#include <TavaroRender/Layers/Private/ReadableText.h>

#include <memory>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <TavaroCore/Captions/SpokenText.h>

namespace tavaro {

namespace {

constexpr UChar32 replacement = 0xFFFD;
constexpr std::string_view tabSpaces = "    ";
constexpr int mostMarks = 6; // on one letter; no language has more, and towers of them leave every line

/// Walks the characters of the text; `visit` gets each and may stop by returning false.
template<class Visit> void eachCharacter(std::string_view text, Visit visit) {
    // A character has four bytes at most, so no index leaves 32 bits whatever the size of the text.
    for (std::size_t at = 0; at < text.size();) {
        auto const head = text.substr(at, 4);
        std::int32_t next = 0;
        UChar32 value = 0;
        U8_NEXT(head.data(), next, static_cast<std::int32_t>(head.size()), value);
        at += static_cast<std::size_t>(next);
        if (!visit(value < 0 ? replacement : value)) return;
    }
}

void append(std::string& text, UChar32 character) {
    char bytes[4];
    std::int32_t size = 0;
    U8_APPEND_UNSAFE(bytes, size, character);
    text.append(bytes, static_cast<std::size_t>(size));
}

bool isLineBreak(UChar32 character) {
    return character == '\n' || character == 0x85 || character == 0x2028 || character == 0x2029;
}

struct CloseText {
    void operator()(UText* text) const { utext_close(text); }
};

/// Calls `visit(end)` with the end of each grapheme until it returns false.
template<class Visit> void eachGrapheme(std::string_view text, Visit visit) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> const breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    std::unique_ptr<UText, CloseText> const view(
        utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status));
    if (U_FAILURE(status)) return;
    breaks->setText(view.get(), status);
    if (U_FAILURE(status)) return;
    for (auto end = breaks->next(); end != icu::BreakIterator::DONE; end = breaks->next()) {
        if (!visit(static_cast<std::size_t>(end))) return;
    }
}

}

std::string readableText(std::string_view bytes, std::size_t maxCharacters, LineBreaks breaks) {
    std::string text;
    std::size_t count = 0;
    bool followsReturn = false;
    int marks = 0;
    eachCharacter(bytes, [&](UChar32 character) {
        if (++count > maxCharacters) {
            text += "…";
            return false;
        }
        bool const endsReturn = followsReturn && character == '\n';
        followsReturn = character == '\r';
        bool const isMark = u_charType(character) == U_NON_SPACING_MARK || u_charType(character) == U_ENCLOSING_MARK;
        marks = isMark ? marks + 1 : 0;
        if (endsReturn || marks > mostMarks) return true;
        if (isLineBreak(character) || character == '\r') {
            text += breaks == LineBreaks::kept ? '\n' : ' ';
        } else if (character == '\t') {
            text += tabSpaces;
        } else if (u_charType(character) != U_CONTROL_CHAR) {
            append(text, character);
        }
        return true;
    });
    return text;
}

std::int64_t graphemesOf(std::string_view text) {
    std::int64_t count = 0;
    eachGrapheme(text, [&](std::size_t) {
        ++count;
        return true;
    });
    return count;
}

std::size_t bytesOfGraphemes(std::string_view text, std::int64_t count) {
    std::size_t bytes = 0;
    if (count <= 0) return 0;
    eachGrapheme(text, [&](std::size_t end) {
        bytes = end;
        return --count > 0;
    });
    return bytes;
}

bool isBlank(std::string_view text) { return trimmed(text).empty(); }

char const* languageOf(std::string_view text) {
    bool hasHan = false;
    char const* language = nullptr;
    eachCharacter(text, [&](UChar32 character) {
        if (character < 0x1100) return true;
        UErrorCode status = U_ZERO_ERROR;
        auto const script = uscript_getScript(character, &status);
        if (script == USCRIPT_HIRAGANA || script == USCRIPT_KATAKANA) language = "ja";
        if (script == USCRIPT_HANGUL) language = "ko";
        hasHan = hasHan || script == USCRIPT_HAN;
        return language == nullptr;
    });
    if (language) return language;
    return hasHan ? "zh-cn" : "en";
}

}
