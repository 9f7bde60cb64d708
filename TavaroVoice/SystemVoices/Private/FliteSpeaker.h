#pragma once

#include <TavaroVoice/Speaking/Speaker.h>

namespace tavaro {

/// The voices of flite, of American and Scottish English: a hundred times as fast as speech. Other alphabets are
/// transcribed. Tells the times of words.
class FliteSpeaker : public Speaker {
public:
    /// None where flite is not installed.
    std::vector<Voice> voices() override;
    Speech speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) override;
};

}
