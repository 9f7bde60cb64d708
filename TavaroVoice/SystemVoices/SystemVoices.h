#pragma once

#include <TavaroVoice/Speaking/Speaker.h>

#include <filesystem>
#include <memory>
#include <optional>

namespace tavaro {

/// The voices of this machine. They need no key, no network and cost nothing. Ids are "system:ENGINE/VOICE".
class SystemVoices : public Speaker {
public:
    /// Where the engines are that run as programs; none where they are not installed.
    struct Places {
        std::optional<std::filesystem::path> espeak;
        std::optional<std::filesystem::path> festival;
        std::filesystem::path festivalVoices = "/usr/share/festival/voices";

        static Places ofThisMachine();
    };

    explicit SystemVoices(Places const& places = Places::ofThisMachine());

    /// The most intelligible first: of festival, of flite, of espeak-ng.
    std::vector<Voice> voices() override;
    /// Those that speak it: "en" is every English, "en-GB" what is spoken in Britain.
    std::vector<Voice> available(std::string_view language);
    Speech speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) override;

private:
    struct Engine {
        std::string name;
        std::unique_ptr<Speaker> speaker; // none where it is not installed
    };
    std::vector<Engine> engines_;
};

}
