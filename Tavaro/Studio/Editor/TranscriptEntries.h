#pragma once

#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/TimeRange.h>

#include <cstddef>
#include <string>
#include <vector>

namespace tavaro {

struct DemoProject;

/// What of a transcript is shown one after the other: the words that the film shows, by output time; the long pauses
/// between them; and words that are cut out, behind the one that was said before them.
struct TranscriptEntry {
    enum class Kind { word, pause, cutWord };

    Kind kind = Kind::word;
    UUID word;                  // of a pause, the word before it
    std::size_t occurrence = 0; // of a word that the film shows several times
    std::string text;           // on one line; of a pause its length
    TimeRange range;            // output seconds; of a cut word the moment at which it is missing
    bool isFiller = false;
    bool beginsParagraph = false; // behind a longer pause, or where the paragraph before is full
};

enum class CutWords { hidden, shown };

/// n log n in the words.
std::vector<TranscriptEntry> transcriptEntries(DemoProject const& project, CutWords cutWords = CutWords::shown);

}
