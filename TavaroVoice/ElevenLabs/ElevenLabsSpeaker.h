#pragma once

#include <TavaroVoice/ElevenLabs/ElevenLabsClient.h>
#include <TavaroVoice/Speaking/Speaker.h>

namespace tavaro {

/// The service's voices. Does not tell the times of words.
class ElevenLabsSpeaker : public Speaker {
public:
    ElevenLabsSpeaker(ElevenLabsClient::KeySource key, ElevenLabsClient::Settings settings)
        : client_(std::move(key), std::move(settings)) {}

    std::vector<Voice> voices() override;
    Speech speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) override;
    ElevenLabsClient& client() { return client_; }

private:
    ElevenLabsClient client_;
};

}
