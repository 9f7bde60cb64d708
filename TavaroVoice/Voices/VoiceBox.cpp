#include <TavaroVoice/Voices/VoiceBox.h>

#include <TavaroVoice/ElevenLabs/ElevenLabsKey.h>
#include <TavaroVoice/Errors/VoiceError.h>

#include <TavaroPlatform/Preferences/Preferences.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace tavaro {

namespace {

std::string chosenHost() {
    if (auto const* const host = std::getenv(elevenLabsHostVariable); host && *host) return host;
    return Preferences().get(elevenLabsHost);
}

}

VoiceBox::Settings VoiceBox::Settings::ofThisUser() {
    return {.service = {.host = chosenHost()}, .key = [] { return elevenLabsKey::find().key; }};
}

VoiceBox::VoiceBox(Settings settings)
    : key_(settings.key)
    , system_(settings.places)
    , service_(std::move(settings.key), std::move(settings.service)) {}

bool VoiceBox::hasKey() { return key_().has_value(); }

std::vector<Voice> VoiceBox::builtInVoices() {
    std::vector<Voice> voices;
    std::ranges::transform(builtInElevenVoices(), std::back_inserter(voices), voiceOf);
    return voices;
}

std::vector<Voice> VoiceBox::voices() {
    auto all = system_.voices();
    problem_.clear();
    std::vector<Voice> others;
    try {
        others = service_.voices();
    } catch (VoiceError const& error) {
        if (error.kind == VoiceError::Kind::noKey) return all;
        problem_ = error.what();
        others = builtInVoices();
    }
    std::ranges::move(others, std::back_inserter(all));
    return all;
}

Speech VoiceBox::speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) {
    if (isSystemVoice(settings.voiceID)) return system_.speak(text, settings, stop);
    return service_.speak(text, settings, stop);
}

Speech VoiceBox::preview(std::string const& voiceID, double speed, std::stop_token const& stop) {
    return speak(previewLine, {.voiceID = voiceID, .speed = speed}, stop);
}

}
