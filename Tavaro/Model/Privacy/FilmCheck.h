#pragma once

#include <Tavaro/Model/Privacy/PrivacyScanJob.h>

#include <TavaroCore/Records/Fields.h>

#include <cstddef>
#include <string>
#include <vector>

namespace tavaro {

/// Something private that can still be read in a finished film.
struct LegibleText {
    SensitiveKind kind = SensitiveKind::custom;
    std::string masked;
    double start = 0; // seconds of the film
    double end = 0;
    bool isHiddenInProject = false;   // and so should not be there
    bool isRejectedInProject = false; // and so is meant to be

    static constexpr auto fields = std::tuple{
        field("kind", &LegibleText::kind),
        field("masked", &LegibleText::masked),
        field("start", &LegibleText::start),
        field("end", &LegibleText::end),
        field("isHiddenInProject", &LegibleText::isHiddenInProject),
        field("isRejectedInProject", &LegibleText::isRejectedInProject),
    };
    bool operator==(LegibleText const&) const = default;
};
static_assert(listsEveryField<LegibleText>);

/// A film that is read again from its first to its last frame. Throws `FileError`.
PrivacyScanRequest filmCheckRequest(std::filesystem::path const& film, RedactionSettings const& settings);

/// What was read in it, by its times; `project` is what the film was made of, where that is known.
std::vector<LegibleText> legibleTexts(MadePrivacyScan const& made, DemoProject const* project);

/// How many there are that nobody rejected: what was rejected is meant to be read.
std::size_t countOfLegible(std::vector<LegibleText> const& texts);
/// "Nothing private can be read in it." or "2 private texts can be read in it."
std::string filmCheckSentence(std::vector<LegibleText> const& texts);
/// "hidden in the project, and legible all the same"; empty where there is nothing to say.
std::string remarkOn(LegibleText const& text);

}
