#include <TavaroCore/Captions/SpokenText.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

namespace tavaro {

namespace {

/// A character and the bytes that it takes; below 0 for a byte that is not UTF-8.
struct Character {
    UChar32 value = 0;
    std::size_t size = 0;
};

Character firstOf(std::string_view text) {
    // A character has four bytes at most, so no index leaves 32 bits whatever the size of the text.
    auto const head = text.substr(0, 4);
    std::int32_t next = 0;
    UChar32 value = 0;
    U8_NEXT(head.data(), next, static_cast<std::int32_t>(head.size()), value);
    return {value, static_cast<std::size_t>(next)};
}

Character lastOf(std::string_view text) {
    auto const tail = text.substr(text.size() - std::min<std::size_t>(text.size(), 4));
    auto at = static_cast<std::int32_t>(tail.size());
    UChar32 value = 0;
    U8_PREV(tail.data(), 0, at, value);
    return {value, tail.size() - static_cast<std::size_t>(at)};
}

bool isBlank(UChar32 character) { return character >= 0 && u_isUWhiteSpace(character); }

bool surroundsWords(UChar32 character) {
    return character >= 0 && (u_ispunct(character) || u_isUWhiteSpace(character));
}

template<class Predicate> std::string_view trimmedOf(std::string_view text, Predicate isOutside) {
    while (!text.empty()) {
        auto const first = firstOf(text);
        if (!isOutside(first.value)) break;
        text.remove_prefix(first.size);
    }
    while (!text.empty()) {
        auto const last = lastOf(text);
        if (!isOutside(last.value)) break;
        text.remove_suffix(last.size);
    }
    return text;
}

bool breaksBetweenLetters(UChar32 character) {
    if (character < 0) return false;
    UErrorCode status = U_ZERO_ERROR;
    auto const script = uscript_getScript(character, &status);
    return U_SUCCESS(status) && uscript_breaksBetweenLetters(script);
}

struct CloseText {
    void operator()(UText* text) const { utext_close(text); }
};

/// Where words of scripts without blanks end inside the word and a line may break, ascending, in bytes; its end is the
/// last. Empty when that cannot be told.
std::vector<std::size_t> breaksOf(std::string_view word) {
    UErrorCode status = U_ZERO_ERROR;
    auto const& root = icu::Locale::getRoot();
    std::unique_ptr<icu::BreakIterator> const lines(icu::BreakIterator::createLineInstance(root, status));
    std::unique_ptr<icu::BreakIterator> const words(icu::BreakIterator::createWordInstance(root, status));
    std::unique_ptr<UText, CloseText> const text(
        utext_openUTF8(nullptr, word.data(), static_cast<std::int64_t>(word.size()), &status));
    if (U_FAILURE(status)) return {};
    lines->setText(text.get(), status);
    words->setText(text.get(), status);
    if (U_FAILURE(status)) return {};
    std::vector<std::size_t> breaks;
    for (auto at = lines->next(); at != icu::BreakIterator::DONE; at = lines->next()) {
        auto const position = static_cast<std::size_t>(at);
        bool const isBetweenLetters = breaksBetweenLetters(lastOf(word.substr(0, position)).value) ||
                                      breaksBetweenLetters(firstOf(word.substr(position)).value);
        if (position < word.size() && !(isBetweenLetters && words->isBoundary(at))) continue;
        breaks.push_back(position);
    }
    return breaks;
}

}

std::size_t lengthOf(std::string_view text) {
    std::size_t count = 0;
    for (; !text.empty(); ++count) text.remove_prefix(firstOf(text).size);
    return count;
}

std::string bareText(std::string_view text) {
    auto const word = trimmedOf(text, surroundsWords);
    auto const isASCII = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    std::string bare;
    if (std::all_of(word.begin(), word.end(), isASCII)) {
        bare.resize(word.size());
        std::transform(word.begin(), word.end(), bare.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
        return bare;
    }
    auto const length = static_cast<std::int32_t>(std::min<std::size_t>(word.size(), INT32_MAX));
    icu::UnicodeString::fromUTF8(icu::StringPiece(word.data(), length))
        .toLower(icu::Locale::getRoot())
        .toUTF8String(bare);
    return bare;
}

std::string_view trimmed(std::string_view text) { return trimmedOf(text, isBlank); }

std::vector<std::string_view> writtenWords(std::string_view text) {
    std::vector<std::string_view> words;
    std::size_t start = 0, at = 0;
    while (at < text.size()) {
        auto const next = firstOf(text.substr(at));
        if (isBlank(next.value)) {
            if (at > start) words.push_back(text.substr(start, at - start));
            start = at + next.size;
        }
        at += next.size;
    }
    if (at > start) words.push_back(text.substr(start));
    return words;
}

std::vector<std::string_view> brokenWord(std::string_view word, std::size_t maxLength) {
    if (lengthOf(word) <= maxLength) return {word};
    std::vector<std::string_view> parts;
    std::size_t start = 0, end = 0; // of the part that is being filled
    for (std::size_t const at : breaksOf(word)) {
        if (end > start && lengthOf(word.substr(start, at - start)) > maxLength) {
            parts.push_back(word.substr(start, end - start));
            start = end;
        }
        end = at;
    }
    if (start < word.size()) parts.push_back(word.substr(start));
    return parts;
}

}
