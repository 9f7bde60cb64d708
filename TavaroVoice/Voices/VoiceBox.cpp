#include <TavaroVoice/Voices/VoiceBox.h>

#include <TavaroVoice/ElevenLabs/ElevenLabsKey.h>
#include <TavaroVoice/Errors/VoiceError.h>

#include <TavaroPlatform/Preferences/Preferences.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace tavaro {

namespace {

/// Throws why there is none, where that is more than that nobody gave one.
std::optional<Secret> keyOfThisUser() {
    auto found = elevenLabsKey::find();
    if (!found.key && !found.problem.empty()) throw VoiceError(VoiceError::Kind::noKey, found.problem);
    return std::move(found.key);
}

std::string chosenHost() {
    if (auto const* const host = std::getenv(elevenLabsHostVariable); host && *host) return host;
    return Preferences().get(elevenLabsHost);
}

}

VoiceBox::Settings VoiceBox::Settings::ofThisUser() {
    return {.service = {.host = chosenHost()}, .key = keyOfThisUser};
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
        if (!hasKey()) return all;
        others = service_.voices();
    } catch (VoiceError const& error) {
        problem_ = error.what();
        if (error.kind == VoiceError::Kind::noKey) return all;
        others = builtInVoices();
    }
    std::ranges::move(others, std::back_inserter(all));
    return all;
}

Speech VoiceBox::speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) {
    if (isSystemVoice(settings.voiceID)) return system_.speak(text, settings, stop);
    return service_.speak(text, settings, stop);
}

}
