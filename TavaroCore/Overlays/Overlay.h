#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Values/RGBAColor.h>
#include <TavaroCore/Values/TimeRange.h>

#include <array>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tavaro {

/// What each kind of overlay carries.
namespace OverlayContent {

struct Title {
    std::string text;
    std::string subtitle;

    static constexpr auto fields = std::tuple{
        field("text", &Title::text),
        field("subtitle", &Title::subtitle),
    };
    bool operator==(Title const&) const = default;
};
static_assert(listsEveryField<Title>);

struct Callout {
    std::string text;

    static constexpr auto fields = std::tuple{
        field("text", &Callout::text),
    };
    bool operator==(Callout const&) const = default;
};
static_assert(listsEveryField<Callout>);

struct Keycap {
    std::vector<std::string> keys;

    static constexpr auto fields = std::tuple{
        field("keys", &Keycap::keys),
    };
    bool operator==(Keycap const&) const = default;
};
static_assert(listsEveryField<Keycap>);

struct Command {
    std::string text;

    static constexpr auto fields = std::tuple{
        field("text", &Command::text),
    };
    bool operator==(Command const&) const = default;
};
static_assert(listsEveryField<Command>);

struct Code {
    std::string text;
    std::string language;

    static constexpr auto fields = std::tuple{
        field("text", &Code::text),
        field("language", &Code::language),
    };
    bool operator==(Code const&) const = default;
};
static_assert(listsEveryField<Code>);

struct Blur {
    NormalizedRect rect;

    static constexpr auto fields = std::tuple{
        field("rect", &Blur::rect),
    };
    bool operator==(Blur const&) const = default;
};
static_assert(listsEveryField<Blur>);

struct Highlight {
    NormalizedRect rect;

    static constexpr auto fields = std::tuple{
        field("rect", &Highlight::rect),
    };
    bool operator==(Highlight const&) const = default;
};
static_assert(listsEveryField<Highlight>);

struct Arrow {
    UnitPoint2 from;
    UnitPoint2 to;

    static constexpr auto fields = std::tuple{
        field("from", &Arrow::from),
        field("to", &Arrow::to),
    };
    bool operator==(Arrow const&) const = default;
};
static_assert(listsEveryField<Arrow>);

struct Box {
    NormalizedRect rect;

    static constexpr auto fields = std::tuple{
        field("rect", &Box::rect),
    };
    bool operator==(Box const&) const = default;
};
static_assert(listsEveryField<Box>);

struct Mask {
    NormalizedRect rect;

    static constexpr auto fields = std::tuple{
        field("rect", &Mask::rect),
    };
    bool operator==(Mask const&) const = default;
};
static_assert(listsEveryField<Mask>);

}

/// What an overlay shows; each kind carries its content. Rectangles are unit coordinates of the source, arrow ends
/// those of the canvas.
struct OverlayKind {
    using Title = OverlayContent::Title;
    using Callout = OverlayContent::Callout;
    using Keycap = OverlayContent::Keycap;
    using Command = OverlayContent::Command;
    using Code = OverlayContent::Code;
    using Blur = OverlayContent::Blur;
    using Highlight = OverlayContent::Highlight;
    using Arrow = OverlayContent::Arrow;
    using Box = OverlayContent::Box;
    using Mask = OverlayContent::Mask;

    std::variant<Title, Callout, Keycap, Command, Code, Blur, Highlight, Arrow, Box, Mask> content;

    static constexpr std::array<std::string_view, 10> caseNames{"title", "callout",   "keycap", "command", "code",
                                                                "blur",  "highlight", "arrow",  "box",     "mask"};
    bool operator==(OverlayKind const&) const = default;
};

enum class OverlayAnimation { none, fade, slideUp, slideDown, scale, typewriter, spring };

constexpr std::array<std::string_view, 7> namesOf(OverlayAnimation) {
    return {"none", "fade", "slideUp", "slideDown", "scale", "typewriter", "spring"};
}

/// A text, keystroke or annotation over the picture for a while.
struct Overlay {
    UUID id = UUID::random();
    OverlayKind kind;
    double start = 0;
    double duration = 3;
    UnitPoint2 position = {0.5, 0.5}; // on the canvas
    double fontSize = 36;             // pixels at a canvas whose smaller side is 1080
    RGBAColor color = RGBAColor::white;
    std::optional<RGBAColor> backgroundColor;
    OverlayAnimation animationIn = OverlayAnimation::fade;
    OverlayAnimation animationOut = OverlayAnimation::fade;
    double animationDuration = 0.3; // seconds
    bool isAutomatic = false;

    TimeRange range() const { return {start, duration}; }

    static constexpr auto fields = std::tuple{
        field("id", &Overlay::id),
        field("kind", &Overlay::kind),
        field("start", &Overlay::start),
        field("duration", &Overlay::duration),
        field("position", &Overlay::position),
        field("fontSize", &Overlay::fontSize),
        field("color", &Overlay::color),
        field("backgroundColor", &Overlay::backgroundColor),
        field("animationIn", &Overlay::animationIn),
        field("animationOut", &Overlay::animationOut),
        field("animationDuration", &Overlay::animationDuration),
        field("isAutomatic", &Overlay::isAutomatic),
    };
    bool operator==(Overlay const&) const = default;
};
static_assert(listsEveryField<Overlay>);

/// A card before or after the recording.
struct TitleCard {
    std::string text;
    std::string subtitle;
    double duration = 2.5;
    RGBAColor background = RGBAColor::rgb(0x111318);
    RGBAColor textColor = RGBAColor::white;
    double fontSize = 72; // pixels at a canvas whose smaller side is 1080
    OverlayAnimation animation = OverlayAnimation::fade;

    bool isEmpty() const { return text.empty() && subtitle.empty(); }

    static constexpr auto fields = std::tuple{
        field("text", &TitleCard::text),           field("subtitle", &TitleCard::subtitle),
        field("duration", &TitleCard::duration),   field("background", &TitleCard::background),
        field("textColor", &TitleCard::textColor), field("fontSize", &TitleCard::fontSize),
        field("animation", &TitleCard::animation),
    };
    bool operator==(TitleCard const&) const = default;
};
static_assert(listsEveryField<TitleCard>);

}
