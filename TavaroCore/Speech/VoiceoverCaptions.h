#pragma once

#include <TavaroCore/Speech/TranscriptCaptions.h>
#include <TavaroCore/Values/TimeRange.h>

#include <functional>
#include <string>
#include <vector>

namespace tavaro {

struct CaptionWord;

/// The words of a line's sound as the voice said them, in seconds of that sound; none where nobody knows. A voice may
/// say more or fewer words than are written ("3 %", "e-mail").
using SaidWords = std::function<std::vector<CaptionWord>(std::string const& asset)>;

/// Captions of the narration, under the rules of `captionCues`, with the words as they are written. Where the voice
/// told the times of its words, each written word that it said has its own; the others, and all words of a line without
/// times, share what is left by their lengths. A line that plays faster than it was said has its words so much closer.
/// The silence behind a line's last word is not captioned.
std::vector<CaptionCue> captionCuesFromVoiceover(DemoProject const& project, SaidWords const& said,
                                                 CaptionBreaks const& breaks = {});

/// A text's written words inside a span, each where it is among the `said` ones, which are in output time too.
std::vector<CaptionWord> wordsAsSaid(std::string const& text, TimeRange const& span,
                                     std::vector<CaptionWord> const& said);

}
