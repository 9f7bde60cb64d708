#include <TavaroVoice/Transcription/ListenerTalk.h>
#include <TavaroVoice/Transcription/Private/Recogniser.h>
#include <TavaroVoice/Transcription/Private/WhisperOutput.h>

#include <cstdint>
#include <cstdlib>

using namespace tavaro;

namespace {

constexpr double seconds = 30;

void expectSound(std::vector<HeardWord> const& words) {
    double last = 0;
    for (auto const& word : words) {
        bool const isInside = word.start >= last && word.end >= word.start && word.end <= seconds;
        bool const isSure = word.confidence >= 0 && word.confidence <= 1;
        if (!isInside || !isSure || word.text.empty()) std::abort();
        last = word.start;
    }
}

}

// Whatever an engine says: words inside of the sound and in order, or a sentence.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string_view const text(reinterpret_cast<char const*>(data), size);
    try {
        expectSound(soundWords(readReply(text).words, seconds));
    } catch (RecogniserLost const& error) {
        if (std::string_view(error.what()).empty()) std::abort();
    }
    try {
        expectSound(soundWords(wordsOfWhisper(text), seconds));
    } catch (RecogniserLost const& error) {
        if (std::string_view(error.what()).empty()) std::abort();
    }
    return 0;
}
