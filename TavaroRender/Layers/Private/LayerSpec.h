#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <TavaroCore/Captions/CaptionTrack.h>
#include <TavaroCore/Values/RGBAColor.h>
#include <TavaroRender/Composition/Private/CanvasGeometry.h>

namespace tavaro {

/// What each kind of layer draws. Texts may be any bytes: what is not UTF-8 or not for reading is replaced when drawn.
namespace LayerContent {

struct Title {
    enum class Ground { picture, plain }; // over a picture, letters without a panel get a shadow
    std::string text;
    std::string subtitle;
    Ground ground = Ground::picture;
    bool operator==(Title const&) const = default;
};

struct Callout {
    std::string text;
    bool operator==(Callout const&) const = default;
};

/// Keys pressed together, by their signs ("⌘") or names ("return").
struct Keycap {
    std::vector<std::string> keys;
    bool operator==(Keycap const&) const = default;
};

struct Command {
    std::string text;
    bool operator==(Command const&) const = default;
};

struct Code {
    std::string text;
    std::string language; // "swift", "js", "C++" …; another one, or none, is coloured by what most languages share
    bool operator==(Code const&) const = default;
};

/// A caption at one moment. Where its lines lie depends on `text` alone; the rest only says which words show and how.
struct Caption {
    std::string text;
    CaptionStyle style = CaptionStyle::minimal;
    CaptionFont font = CaptionFont::system;
    std::size_t shownBytes = std::string::npos; // the beginning of the text that is revealed
    std::size_t spokenBegin = 0; // the word being spoken, bytes of the text; what is before it was spoken
    std::size_t spokenEnd = 0;
    int spokenSteps = 0; // of that word, out of `stepsPerWord`
    static constexpr int stepsPerWord = 8;
    bool operator==(Caption const&) const = default;
};

/// A curved arrow. Ends are canvas pixels.
struct Arrow {
    CanvasPoint from;
    CanvasPoint to;
    static constexpr int steps = 16;
    int drawnSteps = steps; // how much of its length is drawn
    bool operator==(Arrow const&) const = default;
};

/// A rounded outline, and its filling where there is a background. A larger box is put together from nine pieces, whose
/// looks do not depend on its size: the middle of each side and of the box may be stretched.
struct Box {
    enum class Piece { whole, topLeft, top, topRight, left, middle, right, bottomLeft, bottom, bottomRight };
    Piece piece = Piece::whole;
    std::int64_t width = 0; // of a whole one, canvas pixels
    std::int64_t height = 0;
    bool operator==(Box const&) const = default;
};

struct Watermark {
    std::string text;
    bool operator==(Watermark const&) const = default;
};

}

/// Everything that the look of one layer depends on; not where it lies nor how strong it is. Equal looks are equal
/// bitmaps.
struct LayerSpec {
    using Title = LayerContent::Title;
    using Callout = LayerContent::Callout;
    using Keycap = LayerContent::Keycap;
    using Command = LayerContent::Command;
    using Code = LayerContent::Code;
    using Caption = LayerContent::Caption;
    using Arrow = LayerContent::Arrow;
    using Box = LayerContent::Box;
    using Watermark = LayerContent::Watermark;
    using Kind = std::variant<Title, Callout, Keycap, Command, Code, Caption, Arrow, Box, Watermark>;

    Kind kind;
    double fontSize = 36; // pixels at a canvas whose smaller side is 1080
    RGBAColor color = RGBAColor::white;
    std::optional<RGBAColor> background;
    RGBAColor highlightColor = RGBAColor::rgb(0xFFD166);
    std::int64_t canvasWidth = 1920;
    std::int64_t canvasHeight = 1080;
    std::optional<std::int64_t> shownCharacters; // while a text is being typed: graphemes (keys, of keycaps) shown

    /// The bytes of all fields; different looks have different keys.
    std::string cacheKey() const;

    bool operator==(LayerSpec const&) const = default;
};

/// "title", "callout", …
std::string_view kindName(LayerSpec const& look);

}
