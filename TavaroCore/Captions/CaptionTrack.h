#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Values/RGBAColor.h>
#include <TavaroCore/Values/TimeRange.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

enum class CaptionStyle { minimal, creator, karaoke, developer };

constexpr std::array<std::string_view, 4> namesOf(CaptionStyle) {
    return {"minimal", "creator", "karaoke", "developer"};
}

enum class CaptionReveal { line, word };

constexpr std::array<std::string_view, 2> namesOf(CaptionReveal) { return {"line", "word"}; }

enum class CaptionAnimation { none, fade, pop, slideUp };

constexpr std::array<std::string_view, 4> namesOf(CaptionAnimation) { return {"none", "fade", "pop", "slideUp"}; }

enum class CaptionFont { system, rounded, serif, mono };

constexpr std::array<std::string_view, 4> namesOf(CaptionFont) { return {"system", "rounded", "serif", "mono"}; }

struct CaptionWord {
    std::string text;
    double start = 0;
    double end = 0;

    static constexpr auto fields = std::tuple{
        field("text", &CaptionWord::text),
        field("start", &CaptionWord::start),
        field("end", &CaptionWord::end),
    };
    bool operator==(CaptionWord const&) const = default;
};
static_assert(listsEveryField<CaptionWord>);

struct CaptionCue {
    UUID id = UUID::random();
    double start = 0;
    double duration = 0;
    std::string text;
    std::vector<CaptionWord> words;

    TimeRange range() const { return {start, duration}; }

    static constexpr auto fields = std::tuple{
        field("id", &CaptionCue::id),     field("start", &CaptionCue::start), field("duration", &CaptionCue::duration),
        field("text", &CaptionCue::text), field("words", &CaptionCue::words),
    };
    bool operator==(CaptionCue const&) const = default;
};
static_assert(listsEveryField<CaptionCue>);

/// A word in the text of a cue and the output seconds in which it is spoken.
struct SpokenPart {
    std::string_view text; // lies in the cue's text
    double start = 0;
    double end = 0;
};

/// The words of the cue's text, in order. They are timed by the cue's `words` where those are as many; else they share
/// the cue's time by their length, as in a text written by hand.
std::vector<SpokenPart> spokenParts(CaptionCue const& cue);

struct CaptionTrack {
    bool isEnabled = false;
    CaptionStyle style = CaptionStyle::minimal;
    std::vector<CaptionCue> cues;
    UnitPoint2 position = {0.5, 0.88};
    double fontSize = 42; // pixels at a canvas whose smaller side is 1080
    RGBAColor color = RGBAColor::white;
    std::optional<RGBAColor> backgroundColor;
    RGBAColor highlightColor = RGBAColor::rgb(0xFFD166); // of the word being spoken
    CaptionReveal reveal = CaptionReveal::line;
    CaptionAnimation animation = CaptionAnimation::fade;
    CaptionFont font = CaptionFont::system;

    /// The cue shown at output time t; of several that which is listed last. Null when there is none.
    CaptionCue const* cue(double at) const;
    /// The beginning of the cue's text that `reveal` shows at output time t: all of it, or up to the word being spoken.
    std::string_view visibleText(CaptionCue const& of, double at) const;

    /// Captions of a typed text over a span of output time: each is filled up to `maxCharacters` Unicode scalar values
    /// at word borders (scripts that write without blanks are broken where their words end) and lasts its share of the
    /// span by its number of characters, as do the words in it. A longer word is a caption of its own.
    static std::vector<CaptionCue> cuesFromScript(std::string_view script, double start, double duration,
                                                  std::int64_t maxCharacters = 42);

    static constexpr auto fields = std::tuple{
        field("isEnabled", &CaptionTrack::isEnabled),
        field("style", &CaptionTrack::style),
        field("cues", &CaptionTrack::cues),
        field("position", &CaptionTrack::position),
        field("fontSize", &CaptionTrack::fontSize),
        field("color", &CaptionTrack::color),
        field("backgroundColor", &CaptionTrack::backgroundColor),
        field("highlightColor", &CaptionTrack::highlightColor),
        field("reveal", &CaptionTrack::reveal),
        field("animation", &CaptionTrack::animation),
        field("font", &CaptionTrack::font),
    };
    bool operator==(CaptionTrack const&) const = default;
};
static_assert(listsEveryField<CaptionTrack>);

}
