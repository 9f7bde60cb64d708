#pragma once

#include <cstdint>
#include <vector>

#include <TavaroMedia/GIF/GIFPalette.h>

namespace tavaro {

/// The three levels of a colour, 0…255 each.
struct ColorLevels {
    int red = 0, green = 0, blue = 0;

    static constexpr ColorLevels of(std::uint32_t argb) {
        return {static_cast<int>(argb >> 16 & 255), static_cast<int>(argb >> 8 & 255), static_cast<int>(argb & 255)};
    }
    constexpr int squaredDistance(ColorLevels other) const {
        auto const r = red - other.red;
        auto const g = green - other.green;
        auto const b = blue - other.blue;
        return r * r + g * g + b * b;
    }
};

/// Finds the palette's nearest colour. Each cell of the colour cube remembers the few that are nearest to anything in
/// it, from the first time that it is asked for.
class ColorSearch {
public:
    explicit ColorSearch(GIFPalette const& palette);

    /// Of colours equally near the first one.
    std::uint8_t nearest(ColorLevels color);

private:
    std::vector<std::uint8_t> const& candidates(ColorLevels color);

    std::vector<ColorLevels> levels_;
    std::vector<std::vector<std::uint8_t>> cells_;
};

}
