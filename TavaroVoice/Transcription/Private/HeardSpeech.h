#pragma once

#include <TavaroCore/Captions/Transcript.h>
#include <TavaroVoice/Transcription/HeardWord.h>
#include <TavaroVoice/Transcription/Private/SpeechCutter.h>

#include <string>
#include <vector>

namespace tavaro {

/// Whether somebody may be speaking in it: silence and steady noise need no engine.
bool maySpeak(SpeechPiece const& piece);

/// The words that belong to a piece, in seconds of the recording, whose second `offset` the sound begins at.
std::vector<TranscriptWord> wordsIn(SpeechPiece const& piece, std::vector<HeardWord> const& heard, double offset);

/// What is heard of the whole, piece by piece in the order of the sound.
class HeardSpeech {
public:
    /// Adds a piece's words, less one that the piece before ended with already, and returns those that were added.
    std::vector<TranscriptWord> add(std::vector<TranscriptWord> words);
    void addLevels(SpeechPiece const& piece, double offset);

    /// With the spans of sound that gave no word.
    Transcript transcript(std::string const& locale) const;

private:
    std::vector<TimeRange> unrecognised() const;

    std::vector<TranscriptWord> words_;
    double end_ = 0;            // of the last of them
    std::vector<float> levels_; // of the recording, as an envelope has them
};

}
