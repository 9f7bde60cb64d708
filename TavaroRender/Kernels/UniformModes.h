#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace tavaro {

class JSONReader;

// The numbers that choose a formula in the uniform blocks. A number without a name may be in a block as well; the
// formulas say what it draws. The names are those of the document's own kinds.

/// What fills the canvas.
enum class BackgroundMode : std::int32_t {
    solid,
    linear,
    radial,
    mesh,
    aurora,
    none, // transparent
    image,
};

constexpr std::array<std::string_view, 7> namesOf(BackgroundMode) {
    return {"solid", "linearGradient", "radialGradient", "mesh", "aurora", "none", "image"};
}

/// What surrounds the recording.
enum class FrameMode : std::int32_t { none, browser, browserDark, macbook, imac, iphone, ipad, insetBand };

constexpr std::array<std::string_view, 8> namesOf(FrameMode) {
    return {"none", "browserLight", "browserDark", "macbook", "imac", "iphone", "ipad", "insetBand"};
}

/// The pointer's shape.
enum class CursorShape : std::int32_t { arrow, circle, filled, outline, glow, minimal, spotlight };

constexpr std::array<std::string_view, 7> namesOf(CursorShape) {
    return {"native", "circle", "filled", "outline", "glow", "minimal", "spotlight"};
}

/// The effect of a click.
enum class ClickShape : std::int32_t { none, ripple, pulse, ring, spotlight, prism };

constexpr std::array<std::string_view, 6> namesOf(ClickShape) {
    return {"none", "ripple", "pulse", "ring", "spotlight", "prism"};
}

/// What a region effect does.
enum class RegionMode : std::int32_t {
    blur,      // inside: box blur, wide enough that text cannot be read again
    highlight, // outside: mixed with the colour by its alpha, so that the region stands out
    fill,      // inside: mixed with the colour by its alpha
    mask,      // inside: a smooth patch of the colours around the region
};

constexpr std::array<std::string_view, 4> namesOf(RegionMode) { return {"blur", "highlight", "box", "mask"}; }

/// For each of some names the mode of that name. One that the modes do not have does not compile.
template<class Mode, std::size_t count>
consteval std::array<Mode, count> modesNamed(std::array<std::string_view, count> const& names) {
    std::array<Mode, count> modes{};
    auto const known = namesOf(Mode{});
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t number = 0;
        while (known.at(number) != names[i]) ++number; // past the last: no constant
        modes[i] = static_cast<Mode>(number);
    }
    return modes;
}

/// The mode that draws a kind of the document.
template<class Mode, class Kind>
requires std::is_enum_v<Kind>
constexpr Mode modeOf(Kind kind) {
    constexpr auto modes = modesNamed<Mode>(namesOf(Kind{}));
    auto const number = static_cast<std::size_t>(kind);
    return number < modes.size() ? modes[number] : Mode{};
}

/// In JSON modes are numbers.
void readJSON(JSONReader& reader, BackgroundMode& mode);
void readJSON(JSONReader& reader, FrameMode& mode);
void readJSON(JSONReader& reader, CursorShape& mode);
void readJSON(JSONReader& reader, ClickShape& mode);
void readJSON(JSONReader& reader, RegionMode& mode);

}
