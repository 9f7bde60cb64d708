#pragma once

#include <TavaroCore/Captions/CaptionTrack.h>
#include <TavaroCore/Errors/Error.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// A subtitle file that cannot be read.
class SubtitleError : public Error {
public:
    enum class Kind { noCaptions, badTime };
    SubtitleError(Kind kind, std::size_t line, std::string const& sentence);
    /// The same with the place where the text comes from.
    SubtitleError(SubtitleError const& error, std::string const& place);
    Kind const kind;
    std::size_t const line; // from 1
};

/// The cues as a SubRip file, by start and numbered from 1; times are rounded to the nearest millisecond. `offset`
/// seconds are added to every time, as for a film that has a title card before the edit. Cues without text are left
/// out. SubRip knows no escapes, so "-->" in a text becomes "→".
std::string subRipText(std::span<CaptionCue const> cues, double offset = 0);

/// The same as a WebVTT file, with the text escaped.
std::string webVTTText(std::span<CaptionCue const> cues, double offset = 0);

/// Reads a SubRip or WebVTT file; which of both it is shows in its first line. Lenient: numbers and blank lines may be
/// missing, times may have "." or ",", lines end in any way, UTF-16 with a mark and Windows-1252 are understood, styles
/// and notes are skipped. Markup is left out and line breaks stay. Cues come by start; each cue's words share its time
/// by their length. Throws `SubtitleError` for a time that cannot be read and for a text without any caption.
std::vector<CaptionCue> readSubtitles(std::string_view bytes);

}
