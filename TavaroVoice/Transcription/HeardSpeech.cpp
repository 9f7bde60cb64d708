#include <TavaroVoice/Transcription/Private/HeardSpeech.h>

#include <TavaroCore/Captions/SpeechEnvelope.h>
#include <TavaroCore/Values/JoinedRanges.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr float silence = 0.0006F;     // nobody's voice is quieter in a recording
constexpr float liveliness = 1.6F;     // loud over quiet moments; syllables and pauses differ by far more
constexpr std::size_t fewLevels = 100; // two seconds; less says nothing about steadiness

constexpr double levelSeconds = 1.0 / SpeechEnvelope::usualRate;
constexpr double windowSeconds = 0.02;       // of a piece's level
constexpr float loud = 0.018F;               // as silences of a recording are found
constexpr double wordMargin = 0.15;          // seconds that still belong to a word
constexpr double soundGap = 0.3;             // sounds so near are one
constexpr double shortestSound = 0.3;        // shorter ones are clicks
constexpr double longestRecording = 100'000; // seconds that levels are kept of

bool isSame(TranscriptWord const& a, TranscriptWord const& b) {
    double const common = std::min(a.end, b.end) - std::max(a.start, b.start);
    return 2 * common > std::min(a.duration(), b.duration());
}

}

bool maySpeak(SpeechPiece const& piece) {
    auto levels = piece.levels;
    if (levels.empty()) return false;
    std::ranges::sort(levels);
    if (levels.back() < silence) return false;
    auto const quiet = levels[levels.size() / 10], high = levels[levels.size() * 19 / 20];
    return levels.size() < fewLevels || high > liveliness * quiet;
}

std::vector<TranscriptWord> wordsIn(SpeechPiece const& piece, std::vector<HeardWord> const& heard, double offset) {
    std::vector<TranscriptWord> words;
    for (auto const& each : heard) {
        double const middle = piece.start + each.middle();
        if (middle < piece.from || middle >= piece.to) continue;
        words.push_back({.text = each.text,
                         .start = offset + piece.start + each.start,
                         .end = offset + piece.start + each.end,
                         .confidence = each.confidence});
    }
    std::erase_if(words, [](auto const& word) { return word.end <= 0; });
    for (auto& word : words) word.start = std::max(word.start, 0.0);
    return words;
}

std::vector<TranscriptWord> HeardSpeech::add(std::vector<TranscriptWord> words) {
    std::erase_if(words, [&](auto const& word) {
        if (word.start >= end_) return false;
        return std::ranges::any_of(words_, [&](auto const& known) { return isSame(known, word); });
    });
    words_.insert(words_.end(), words.begin(), words.end());
    for (auto const& word : words) end_ = std::max(end_, word.end);
    return words;
}

void HeardSpeech::addLevels(SpeechPiece const& piece, double offset) {
    for (std::size_t i = 0; i < piece.levels.size(); ++i) {
        double const at = offset + piece.start + (static_cast<double>(i) + 0.5) * windowSeconds;
        if (at < 0 || at > longestRecording) continue;
        auto const entry = static_cast<std::size_t>(at / levelSeconds);
        if (levels_.size() <= entry) levels_.resize(entry + 1);
        levels_[entry] = std::max(levels_[entry], piece.levels[i]);
    }
}

Transcript HeardSpeech::transcript(std::string const& locale) const {
    Transcript transcript{.words = words_,
                          .unrecognisedSounds = unrecognised(),
                          .localeIdentifier = locale,
                          .envelope = SpeechEnvelope{.levels = levels_}.packed()};
    std::ranges::stable_sort(transcript.words, {}, &TranscriptWord::start);
    return transcript;
}

std::vector<TimeRange> HeardSpeech::unrecognised() const {
    auto isOpen = std::vector<bool>(levels_.size());
    for (std::size_t i = 0; i < levels_.size(); ++i) isOpen[i] = levels_[i] >= loud;
    for (auto const& word : words_) {
        auto const first = static_cast<std::size_t>(std::max(word.start - wordMargin, 0.0) / levelSeconds);
        auto const end = static_cast<std::size_t>((word.end + wordMargin) / levelSeconds) + 1;
        for (auto i = first; i < std::min(end, isOpen.size()); ++i) isOpen[i] = false;
    }
    std::vector<TimeRange> ranges;
    for (std::size_t i = 0; i < isOpen.size(); ++i)
        if (isOpen[i]) ranges.push_back({static_cast<double>(i) * levelSeconds, levelSeconds});
    ranges = joined(std::move(ranges), soundGap);
    std::erase_if(ranges, [](auto const& range) { return range.duration < shortestSound; });
    return ranges;
}

}
