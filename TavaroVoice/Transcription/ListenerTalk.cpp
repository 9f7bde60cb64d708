#include <TavaroVoice/Transcription/ListenerTalk.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroVoice/Transcription/Private/Recogniser.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr float fullScale = 32767;
constexpr std::size_t longestWord = 200; // bytes

}

std::string requestLine(MonoSound const& piece) {
    ListenerRequest request;
    request.sound.bytes.reserve(2 * piece.samples.size());
    for (auto const sample : piece.samples) {
        auto const level = std::isfinite(sample) ? std::clamp(sample, -1.0F, 1.0F) : 0.0F;
        auto const bits = static_cast<std::uint16_t>(static_cast<std::int16_t>(std::lround(level * fullScale)));
        request.sound.bytes.push_back(static_cast<std::uint8_t>(bits & 0xFFU));
        request.sound.bytes.push_back(static_cast<std::uint8_t>(bits >> 8U));
    }
    return encodeJSON(request);
}

std::vector<std::int16_t> samplesOf(ListenerRequest const& request) {
    auto const& bytes = request.sound.bytes;
    std::vector<std::int16_t> samples(bytes.size() / 2);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::int16_t>(bytes[2 * i] | static_cast<std::uint16_t>(bytes[2 * i + 1] << 8U));
    return samples;
}

ListenerReply readReply(std::string_view line) {
    try {
        return decodeJSON<ListenerReply>(line);
    } catch (JSONError const& error) {
        throw RecogniserLost("the speech recognizer gave an answer that cannot be read: " +
                             excerpt(std::string(error.what())));
    }
}

std::vector<HeardWord> soundWords(std::vector<HeardWord> words, double seconds) {
    std::vector<HeardWord> kept;
    for (auto& word : words) {
        if (!std::isfinite(word.start) || !std::isfinite(word.end)) continue;
        word.text = excerpt(trimmed(word.text), longestWord);
        word.start = std::clamp(word.start, 0.0, seconds);
        word.end = std::clamp(word.end, word.start, seconds);
        word.confidence = std::isfinite(word.confidence) ? std::clamp(word.confidence, 0.0F, 1.0F) : 0;
        if (!word.text.empty()) kept.push_back(std::move(word));
    }
    std::ranges::stable_sort(kept, {}, &HeardWord::start);
    return kept;
}

}
