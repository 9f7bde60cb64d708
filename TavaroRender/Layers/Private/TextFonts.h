#pragma once

#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include <TavaroRender/Layers/Private/TextHandles.h>

namespace tavaro {

enum class TextFace { text, display, rounded, serif, mono };

/// How letters are set. Sizes are canvas pixels, an em each.
struct TextStyle {
    TextFace face = TextFace::text;
    double size = 36;
    int weight = 400;        // 100…900
    double tracking = 0;     // em added between letters
    double lineHeight = 1.3; // em between baselines; lines of taller scripts are further apart
};

/// The fonts of layers: a family for each face and whatever the machine has for characters that it lacks. Glyphs are
/// neither hinted nor snapped to pixels, whatever the desktop prefers, so a text looks the same on every machine that
/// has the fonts. The first use reads the machine's list of fonts (tens of milliseconds). One thread at a time.
class TextFonts {
public:
    /// Throws `LayerError` when the machine has no fonts at all; a family that it lacks is replaced.
    TextFonts();

    /// An empty layout in that style. `cuts` are bytes of the text at which its runs must be divided.
    PangoLayoutHandle layout(std::string_view text, TextStyle const& style, std::vector<std::size_t> const& cuts) const;

    /// Height of the capital letters, em.
    double capHeight(TextStyle const& style);

private:
    PangoMap map_;
    PangoContextHandle context_;
    std::map<std::pair<TextFace, int>, double> capHeights_;
};

}
