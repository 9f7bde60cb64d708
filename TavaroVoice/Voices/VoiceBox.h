#pragma once

#include <TavaroVoice/ElevenLabs/ElevenLabsSpeaker.h>
#include <TavaroVoice/SystemVoices/SystemVoices.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// All voices of this machine and its user behind one object: "system:…" are spoken here, others by the service. Cheap
/// until it is used; one for each thread.
class VoiceBox : public Speaker {
public:
    struct Settings {
        SystemVoices::Places places = SystemVoices::Places::ofThisMachine();
        ElevenLabsClient::Settings service;
        ElevenLabsClient::KeySource key; // throws `VoiceError::Kind::noKey` where there may be one that nobody gets

        /// As the user chose: the service's host and key.
        static Settings ofThisUser();
    };
    explicit VoiceBox(Settings settings = Settings::ofThisUser());

    /// Those of this machine; and with a key, those of the service: the user's own, or the known ones where the service
    /// does not answer (`problem` then has the reason).
    std::vector<Voice> voices() override;
    std::vector<Voice> systemVoices() { return system_.voices(); }
    static std::vector<Voice> builtInVoices();
    /// Why the service's list is not the user's own, or is not there although there may be a key, after `voices`.
    std::string const& problem() const { return problem_; }

    Speech speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) override;
    /// By which voices are compared.
    static constexpr auto previewLine = "Here's how your demo will sound with this voice.";

    /// May ask the user to unlock the keychain; throws `VoiceError::Kind::noKey` where it does not answer.
    bool hasKey();
    ElevenLabsClient& service() { return service_.client(); }

private:
    ElevenLabsClient::KeySource const key_;
    SystemVoices system_;
    ElevenLabsSpeaker service_;
    std::string problem_;
};

}
