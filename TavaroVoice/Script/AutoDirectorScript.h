#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Geometry.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

struct DemoProject;

/// Drafts a narration of a film from what happens in it: a line for each beat, in the first person, said when it
/// happens. Pure, so any thread; the same film gives the same lines, whose identities are new.
struct AutoDirectorScript {
    enum class Style { demo, launch, tutorial, pitch, social };

    struct Beat {
        enum class Kind { opening, click, typing, shortcut, appSwitch, drag, closing };

        UUID id = UUID::random();
        double time = 0;  // output seconds at which the line begins
        std::string text; // the line
        Kind kind = Kind::click;
        std::optional<UnitPoint2> position;  // of a click, on the picture as the film shows it
        std::optional<std::string> app = {}; // in front

        friend constexpr std::array<std::string_view, 7> namesOf(Kind) {
            return {"opening", "click", "typing", "shortcut", "appSwitch", "drag", "closing"};
        }
        static constexpr auto fields = std::tuple{
            field("id", &Beat::id),     field("time", &Beat::time),         field("text", &Beat::text),
            field("kind", &Beat::kind), field("position", &Beat::position), field("app", &Beat::app),
        };
        bool operator==(Beat const&) const = default;
    };

    std::string productName; // empty or "this" is the demonstrated application
    Style style = Style::demo;

    /// The beats of what the edit shows, ascending. Each line can be spoken before the next begins and before the film
    /// ends; only the opening of a film that is shorter than that is longer. What happens while a line is spoken has
    /// none of its own, unless it is worth more. Empty for a film that shows nothing.
    std::vector<Beat> beats(DemoProject const& project) const;
};
static_assert(listsEveryField<AutoDirectorScript::Beat>);

constexpr std::array<std::string_view, 5> namesOf(AutoDirectorScript::Style) {
    return {"demo", "launch", "tutorial", "pitch", "social"};
}
std::string_view displayName(AutoDirectorScript::Style style);
std::string_view detailOf(AutoDirectorScript::Style style);

}
