#pragma once

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Values/TimeRange.h>

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace tavaro {

struct DemoProject;
struct UUID;

/// Edits of the film by its transcript. Words are cut out of the picture with `removeTimeRange`, so every timed item
/// stays in step; the transcript itself keeps them, as it keeps what any other cut hides. Times are output seconds.

/// What an edit did.
struct TranscriptCut {
    std::size_t count = 0; // pauses tightened, or words cut
    double seconds = 0;    // by which the edit got shorter

    bool operator==(TranscriptCut const&) const = default;
};

/// Removes the ranges, all given in the timeline as it is now: those that overlap or touch are one, and what is 0.01 s
/// or shorter stays. Returns the seconds by which the edit got shorter.
double removeRanges(DemoProject& project, std::vector<TimeRange> ranges);

struct PauseTightening {
    double threshold = 0.6; // seconds; longer silences between words are pauses
    double keep = 0.25;     // seconds that stay of each, half on either side of the cut
};

/// Shortens the long pauses between words; a pause that would lose 0.05 s or less stays as it is.
TranscriptCut tightenPauses(DemoProject& project, PauseTightening const& tightening = {});

/// Cuts words out, wherever the edit shows them; identifiers of no such word are passed over. A cut follows the word's
/// sound and the silence around it, so that no half syllable and no double pause is left:
///
///     so    [um]         we start
///     ──┤ ├─────┤       ├──
///        s           l             s, l: the shorter and the longer silence beside the word
///       ·[=========]               the cut: all of s but a guard, and a margin of l; the longer silence is what stays
///
/// - Recognised times are rough, so a cut takes a margin of up to 0.08 s of the silence on either side, and leaves a
///   guard of the same size beside the neighbouring words; of a silence too short for both each gets half.
/// - Of the shorter silence it takes up to 0.5 s: what is longer shows something that was meant to be seen.
/// - Words that are cut together go in one cut when at most 1 s of silence is between them.
/// - Before the first and behind the last word only the margin goes.
/// - The time of a word that stays is never cut, even where a word that is cut overlaps it.
TranscriptCut deleteWords(DemoProject& project, std::span<UUID const> words);

/// The cuts, by the rules above, that remove every filler word; ascending and apart from each other.
std::vector<TimeRange> fillerRanges(DemoProject const& project);
TranscriptCut removeFillers(DemoProject& project);

/// The text cannot be taken over.
class TranscriptError : public Error {
public:
    enum class Kind { noTranscript, noWords };
    TranscriptError(Kind kind, std::string const& sentence) : Error(sentence), kind(kind) {}
    Kind const kind;
};

/// What became of the words.
struct TranscriptReplacement {
    std::size_t deleted = 0;   // words cut out of the film
    std::size_t corrected = 0; // words whose spelling changed
    std::size_t inserted = 0;  // written words that nobody spoke
    double seconds = 0;        // by which the edit got shorter

    bool operator==(TranscriptReplacement const&) const = default;
};

/// Takes the text over as what the film says: it is compared with the words that the edit shows, ignoring case and
/// punctuation. Words that are missing in it are cut by the rules of `deleteWords`; words that are spelled otherwise
/// are corrected in the transcript. Words in place of others are corrections of those that they resemble most. A word
/// that nobody spoke is written to the spoken word before it ("hello" becomes "hello there"), or to the one behind it
/// at the start of the text and of a sentence. No word's time changes. An empty text cuts every word. Throws
/// `TranscriptError` without a transcript, and for a text when the edit shows no words.
TranscriptReplacement replaceTranscriptText(DemoProject& project, std::string_view with);

}
