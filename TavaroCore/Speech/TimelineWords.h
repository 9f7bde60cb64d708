#pragma once

#include <TavaroCore/Captions/Transcript.h>
#include <TavaroCore/Values/TimeRange.h>

#include <cstddef>
#include <vector>

namespace tavaro {

struct DemoProject;

/// A transcript word as the edit shows it.
struct TimelineWord {
    TranscriptWord word;   // in seconds of the recording
    TimeRange range;       // output seconds
    std::size_t index = 0; // of the word in the transcript

    bool operator==(TimelineWord const&) const = default;
};

/// The transcript's words that the edit shows, by output time. Of a word that is partly cut the visible part is kept
/// when it is at least half of the word; else the word is left out. Parts that play one after the other count as one
/// part, so a split inside a word changes nothing; of parts that lie apart the longest counts. A word that several
/// clips show is there for each. Empty without a transcript. n log n.
std::vector<TimelineWord> timelineWords(DemoProject const& project);

/// The silences longer than `threshold` seconds between neighbouring words, in output seconds; each begins where the
/// words before it have ended. Nothing before the first word and behind the last.
std::vector<TimeRange> longPauses(std::vector<TimelineWord> const& words, double threshold);
std::vector<TimeRange> longPauses(DemoProject const& project, double threshold);

}
