#pragma once

#include <TavaroVoice/Speaking/Speaker.h>

#include <filesystem>
#include <optional>

namespace tavaro {

/// The voices of espeak-ng, by its program: more than a hundred languages, none of them like a person. Does not tell
/// the times of words.
class EspeakSpeaker : public Speaker {
public:
    /// The program's file.
    explicit EspeakSpeaker(std::filesystem::path program) : program_(std::move(program)) {}

    std::vector<Voice> voices() override;
    Speech speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) override;

    /// The voices in what `espeak-ng --voices` prints.
    static std::vector<Voice> voicesOf(std::string_view listing);

private:
    bool hasVoice(std::string const& id);

    std::filesystem::path const program_;
    std::optional<std::vector<Voice>> voices_;
};

}
