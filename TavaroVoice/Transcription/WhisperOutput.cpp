#include <TavaroVoice/Transcription/Private/WhisperOutput.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Records/JSONError.h>
#include <TavaroCore/Records/JSONValue.h>
#include <TavaroVoice/Transcription/Private/Recogniser.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

namespace tavaro {

namespace {

constexpr double unit = 0.001; // times are milliseconds

// Each byte that is not ASCII becomes one of 128 characters that no language uses, which JSON takes wherever they are;
// it becomes a byte again once the tokens of a word are together.
constexpr std::uint32_t firstStandIn = 0xF780;
constexpr unsigned char firstByte = 0x80;

std::string withStandIns(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (auto const c : bytes) {
        auto const byte = static_cast<unsigned char>(c);
        if (byte < firstByte) {
            text += c;
            continue;
        }
        auto const point = firstStandIn + byte - firstByte;
        text += static_cast<char>(0xE0U | (point >> 12U));
        text += static_cast<char>(0x80U | ((point >> 6U) & 0x3FU));
        text += static_cast<char>(0x80U | (point & 0x3FU));
    }
    return text;
}

std::string withoutStandIns(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto const at = [&](std::size_t offset) {
            return i + offset < text.size() ? static_cast<std::uint32_t>(static_cast<unsigned char>(text[i + offset]))
                                            : 0U;
        };
        auto const point = ((at(0) & 0x0FU) << 12U) | ((at(1) & 0x3FU) << 6U) | (at(2) & 0x3FU);
        bool const isStandIn =
            at(0) == 0xEFU && i + 2 < text.size() && point >= firstStandIn && point < firstStandIn + 128;
        bytes += isStandIn ? static_cast<char>(point - firstStandIn + firstByte) : text[i];
        if (isStandIn) i += 2;
    }
    return bytes;
}

double numberOf(JSONValue const* value) {
    auto const* const whole = value ? value->as<std::int64_t>() : nullptr;
    auto const* const number = value ? value->as<double>() : nullptr;
    return whole ? static_cast<double>(*whole) : number ? *number : 0;
}

struct Token {
    std::string text;
    double start = 0;
    double end = 0;
    double probability = 0;
};

Token tokenOf(JSONValue const& value) {
    Token token;
    if (auto const* const text = value.find<std::string>("text")) token.text = withoutStandIns(*text);
    if (auto const* const offsets = value.find("offsets")) {
        token.start = unit * numberOf(offsets->find("from"));
        token.end = unit * numberOf(offsets->find("to"));
    }
    token.probability = numberOf(value.find("p"));
    return token;
}

/// "[_BEG_]" and the like.
bool isMark(std::string_view text) { return text.starts_with("[_") || text.starts_with("<|"); }

/// "[Music]", "(laughs)", "*sighs*", "♪♪": a note about another sound.
bool isNote(std::string_view text) {
    auto const note = trimmed(text);
    return note.empty() || (note.front() == '[' && note.back() == ']') || (note.front() == '(' && note.back() == ')') ||
           (note.size() > 1 && note.front() == '*' && note.back() == '*') || note.starts_with("♪");
}

/// In scripts that put no blanks between words each character begins one: Han, Kana and their like are these bytes.
bool beginsUnspaced(std::string_view text) {
    auto const first = static_cast<unsigned char>(text.front());
    return first >= 0xE3 && first <= 0xE9 && lengthOf(text) * 3 <= text.size() && !text.starts_with("\xE3\x80");
}

bool beginsWord(Token const& token, bool isFirst) {
    return isFirst || token.text.front() == ' ' || beginsUnspaced(token.text);
}

/// A word that is being put together.
struct Word {
    HeardWord word;
    double probabilities = 0;
    int tokens = 0;
};

std::vector<HeardWord> wordsOf(JSONValue::Array const& tokens) {
    std::vector<Word> words;
    for (auto const& each : tokens) {
        auto const token = tokenOf(each);
        if (token.text.empty() || isMark(token.text)) continue;
        if (beginsWord(token, words.empty())) words.push_back({.word = {.text = {}, .start = token.start}});
        auto& last = words.back();
        last.word.text += token.text;
        last.word.end = std::max(token.end, last.word.start);
        last.probabilities += token.probability;
        last.word.confidence = static_cast<float>(last.probabilities / ++last.tokens);
    }
    std::vector<HeardWord> heard;
    for (auto& word : words) heard.push_back(std::move(word.word));
    return heard;
}

}

std::vector<HeardWord> wordsOfWhisper(std::string_view output) {
    std::vector<HeardWord> words;
    try {
        auto const whole = JSONValue::parse(withStandIns(output));
        auto const* const segments = whole.find<JSONValue::Array>("transcription");
        if (!segments) throw RecogniserLost("whisper.cpp wrote no transcription");
        for (auto const& segment : *segments) {
            auto const* const text = segment.find<std::string>("text");
            auto const* const tokens = segment.find<JSONValue::Array>("tokens");
            if (!tokens || (text && isNote(withoutStandIns(*text)))) continue;
            auto const more = wordsOf(*tokens);
            words.insert(words.end(), more.begin(), more.end());
        }
    } catch (JSONError const& error) {
        throw RecogniserLost("whisper.cpp wrote what cannot be read: " + excerpt(std::string(error.what())));
    }
    return words;
}

}
