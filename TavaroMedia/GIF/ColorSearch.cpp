#include <TavaroMedia/GIF/Private/ColorSearch.h>

#include <algorithm>
#include <limits>

namespace tavaro {

namespace {

constexpr int cellBits = 5; // a channel
constexpr int cellSide = 256 >> cellBits;

/// Of a channel's distance to the cell from `low`: the nearest and the farthest place in it.
struct Reach {
    int least, most;
};

Reach reach(int level, int low) {
    auto const high = low + cellSide - 1;
    auto const outside = std::max({low - level, level - high, 0});
    return {outside * outside, std::max((level - low) * (level - low), (high - level) * (high - level))};
}

Reach reach(ColorLevels color, ColorLevels low) {
    auto const red = reach(color.red, low.red);
    auto const green = reach(color.green, low.green);
    auto const blue = reach(color.blue, low.blue);
    return {red.least + green.least + blue.least, red.most + green.most + blue.most};
}

}

ColorSearch::ColorSearch(GIFPalette const& palette) : cells_(std::size_t{1} << (3 * cellBits)) {
    for (auto const color : palette.colors) levels_.push_back(ColorLevels::of(color));
    levels_.pop_back(); // what shows through is no colour
}

std::vector<std::uint8_t> const& ColorSearch::candidates(ColorLevels color) {
    auto const [red, green, blue] = ColorLevels{color.red / cellSide, color.green / cellSide, color.blue / cellSide};
    auto& cell = cells_[static_cast<std::size_t>((red << cellBits | green) << cellBits | blue)];
    if (!cell.empty()) return cell;
    ColorLevels const low{red * cellSide, green * cellSide, blue * cellSide};
    auto bound = std::numeric_limits<int>::max();
    for (auto const& level : levels_) bound = std::min(bound, reach(level, low).most);
    for (std::size_t i = 0; i < levels_.size(); ++i) {
        if (reach(levels_[i], low).least <= bound) cell.push_back(static_cast<std::uint8_t>(i));
    }
    return cell;
}

std::uint8_t ColorSearch::nearest(ColorLevels color) {
    auto const& some = candidates(color);
    auto best = some.front();
    auto distance = std::numeric_limits<int>::max();
    for (auto const index : some) {
        auto const other = color.squaredDistance(levels_[index]);
        if (other < distance) {
            distance = other;
            best = index;
        }
    }
    return best;
}

}
