#include <TavaroCore/Records/JSONError.h>
#include <TavaroMedia/Audio/MonoSound.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroVoice/ElevenLabs/ElevenLabsVoices.h>
#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Speaking/Private/SpokenText.h>
#include <TavaroVoice/SystemVoices/Private/EspeakSpeaker.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

using namespace tavaro;

namespace {

template<class Failure, class Work> void attempt(Work const& work) {
    try {
        work();
    } catch (Failure const&) {
        // refused
    }
}

void readLists(std::string_view bytes) {
    attempt<JSONError>([&] {
        for (auto const& voice : elevenVoicesOf(bytes))
            if (voiceOf(voice).id.empty()) std::abort();
    });
    attempt<JSONError>([&] {
        for (auto const& model : elevenModelsOf(bytes))
            if (model.modelID.empty()) std::abort();
    });
    for (auto const& voice : EspeakSpeaker::voicesOf(bytes))
        if (voice.id.find_first_of(" ;'\"") != std::string::npos) std::abort();
}

void speak(std::string const& text, Letters letters) {
    attempt<VoiceError>([&] {
        for (auto const& phrase : spokenPhrases(text, letters))
            if (spokenText(phrase).find_first_of("\"\\()[]<>\n") != std::string::npos) std::abort();
    });
}

}

// Any bytes are no answer of a voice service or an engine, or some voices and sounds; and any text is one to speak.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string_view const bytes(reinterpret_cast<char const*>(data), size);
    readLists(bytes);
    attempt<MediaError>([&] { resampled(soundOfWAV(bytes), 48'000); });
    for (auto const letters : {Letters::all, Letters::ascii}) speak(std::string(bytes), letters);
    return 0;
}
