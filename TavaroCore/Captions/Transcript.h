#pragma once

#include <TavaroCore/Records/Data.h>
#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/TimeRange.h>

#include <string>
#include <vector>

namespace tavaro {

/// A recognised word; times are seconds of the recording.
struct TranscriptWord {
    UUID id = UUID::random();
    std::string text; // as recognised, with punctuation
    double start = 0;
    double end = 0;
    float confidence = 0;

    double duration() const { return end - start; }
    /// The text in lower case, without the punctuation and white space around it.
    std::string bare() const;
    /// A sound of hesitation, as "Um," or "hmm".
    bool isFiller() const;

    static constexpr auto fields = std::tuple{
        field("id", &TranscriptWord::id),
        field("text", &TranscriptWord::text),
        field("start", &TranscriptWord::start),
        field("end", &TranscriptWord::end),
        field("confidence", &TranscriptWord::confidence),
    };
    bool operator==(TranscriptWord const&) const = default;
};
static_assert(listsEveryField<TranscriptWord>);

struct Transcript {
    std::vector<TranscriptWord> words;         // in time order
    std::vector<TimeRange> unrecognisedSounds; // sound that produced no word
    std::string localeIdentifier;
    Date createdAt = Date::now();
    Data envelope; // packed level envelope of the audio

    /// The words' texts with a blank between each two.
    std::string plainText() const;
    std::vector<TranscriptWord> fillerWords() const;

    static constexpr auto fields = std::tuple{
        field("words", &Transcript::words),
        field("unrecognisedSounds", &Transcript::unrecognisedSounds),
        field("localeIdentifier", &Transcript::localeIdentifier),
        field("createdAt", &Transcript::createdAt),
        field("envelope", &Transcript::envelope),
    };
    bool operator==(Transcript const&) const = default;
};
static_assert(listsEveryField<Transcript>);

}
