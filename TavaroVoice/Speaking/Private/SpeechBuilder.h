#pragma once

#include <TavaroVoice/Speaking/Private/SpokenText.h>
#include <TavaroVoice/Speaking/Speaker.h>

#include <TavaroMedia/Audio/MonoSound.h>

#include <optional>
#include <stop_token>
#include <vector>

namespace tavaro {

/// When a word is heard, in seconds of its phrase.
struct WordTime {
    double start = 0;
    double end = 0;
};

/// A speech made of phrases, one after the other.
class SpeechBuilder {
public:
    /// `times` are those of the phrase's words; of another number than there are words, they are not used.
    void append(MonoSound const& sound, SpokenPhrase const& phrase, std::vector<WordTime> const& times);
    Speech take();

private:
    Speech speech_;
    bool hasTimes_ = true;
};

/// A speed that can be listened to: from a quarter to four times the voice's own.
double audibleSpeed(double speed);

/// The speech in another time, at its own pitch.
Speech stretched(Speech speech, double speed);

/// Throws `VoiceError` (`cancelled`) when a stop is requested.
void expectNoStop(std::stop_token const& stop);

}
