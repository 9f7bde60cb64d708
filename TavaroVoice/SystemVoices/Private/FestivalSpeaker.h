#pragma once

#include <TavaroVoice/Speaking/Speaker.h>

#include <filesystem>
#include <string_view>

namespace tavaro {

/// The voices of festival, by its program: those of the kind “HTS” are the most intelligible ones that a machine has
/// without a network. Other alphabets are transcribed. Tells the times of words.
class FestivalSpeaker : public Speaker {
public:
    /// The program's file, and the folder of its voices: LANGUAGE/VOICE below it.
    FestivalSpeaker(std::filesystem::path program, std::filesystem::path voices)
        : program_(std::move(program))
        , folder_(std::move(voices)) {}

    std::vector<Voice> voices() override;
    Speech speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) override;

private:
    std::filesystem::path const program_;
    std::filesystem::path const folder_;
};

}
