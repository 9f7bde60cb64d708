#pragma once

#include <cstdint>
#include <vector>

namespace tavaro {

struct CaptionCue;
struct CaptionWord;
struct DemoProject;

struct CaptionBreaks {
    std::int64_t maxCharacters = 42; // of a cue, in Unicode scalar values; only a single longer word exceeds it
    double breakOnPause = 0.8;       // seconds of silence that end a cue
};

/// Captions of words in output time, in their order. A cue ends before a pause or when it is full, and after a sentence
/// that has filled more than a third of it; then it stays on the screen until the next cue, for one second at most.
std::vector<CaptionCue> captionCues(std::vector<CaptionWord> words, CaptionBreaks const& breaks = {});

/// The same of the words that the edit shows, without the filler words. A transcript word of several written
/// words ("going to") shares its time among them.
std::vector<CaptionCue> captionCuesFromTranscript(DemoProject const& project, CaptionBreaks const& breaks = {});

}
