#include <TavaroVoice/ElevenLabs/ElevenLabsSpeaker.h>

#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Speaking/Private/SpeechBuilder.h>
#include <TavaroVoice/Speaking/Private/SpokenText.h>

#include <TavaroMedia/Audio/MonoSound.h>
#include <TavaroMedia/Errors/MediaError.h>

#include <fmt/format.h>
#include <utility>

namespace tavaro {

namespace {

constexpr double mostSeconds = 3600; // of one line

/// What the service's own speed does not reach.
Speech atSpeed(Speech speech, double speed) {
    auto const left = audibleSpeed(speed) / servedSpeed(speed);
    return left == 1 ? speech : stretched(std::move(speech), left);
}

}

std::vector<Voice> ElevenLabsSpeaker::voices() {
    std::vector<Voice> voices;
    for (auto const& voice : client_.voices()) voices.push_back(voiceOf(voice));
    return voices;
}

Speech ElevenLabsSpeaker::speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) {
    spokenPhrases(text, Letters::all); // what cannot be said is not paid for
    auto const bytes = client_.synthesize(text, settings, stop);
    try {
        return atSpeed({.samples = soundOfFile(bytes, mostSeconds).samples}, settings.speed);
    } catch (MediaError const& error) {
        throw VoiceError(VoiceError::Kind::service,
                         fmt::format("ElevenLabs returned audio that cannot be played: {}.", error.detail()));
    }
}

}
