#include <TavaroVision/Scanning/Private/CoverEdges.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

namespace tavaro {

namespace {

constexpr int outside = 3; // pixels from a mask to the places that it takes its colors from
constexpr int alike = 10;  // levels of brightness

struct Side {
    int width = 0;
    int stroke = 0; // levels
};

/// The level of brightness of most of what is just above and below the text.
int groundOf(GrayView const& picture, PixelBox const& text) {
    std::vector<std::uint8_t> levels;
    for (int const y : {text.y - 1, text.bottom()}) {
        if (y < 0 || y >= picture.height) continue;
        auto const* row = picture.pixels + y * picture.stride;
        levels.insert(levels.end(), row + std::max(0, text.x), row + std::min(text.right(), picture.width));
    }
    if (levels.empty()) return 0;
    auto const middle = levels.begin() + static_cast<std::ptrdiff_t>(levels.size() / 2);
    std::ranges::nth_element(levels, middle);
    return *middle;
}

/// How much the four pixels around that corner differ from the ground; outside of the picture they do not.
int strokeAt(GrayView const& picture, int x, int y, int ground) {
    int most = 0;
    for (int row = std::max(0, y - 1); row <= std::min(y, picture.height - 1); ++row) {
        for (int column = std::max(0, x - 1); column <= std::min(x, picture.width - 1); ++column) {
            most = std::max(most, std::abs(picture.pixels[row * picture.stride + column] - ground));
        }
    }
    return most;
}

}

CoverEdges coverEdges(GrayView const& picture, PixelBox const& text, int letterHeight) {
    int const usual = 2 + letterHeight / 3, least = 2 + letterHeight / 6, most = 2 + letterHeight;
    int const ground = groundOf(picture, text);
    auto const sideFrom = [&](int edge, int direction, int middle) {
        Side best{usual, std::numeric_limits<int>::max()};
        for (int step = 0; best.stroke > alike && step <= most - least; ++step) {
            for (int const width : {usual + step, usual - step}) {
                if (width < least || width > most) continue;
                int const stroke = strokeAt(picture, edge + direction * (width + outside), middle, ground);
                if (stroke < best.stroke) best = {width, stroke};
            }
        }
        return best;
    };
    int const above = 2 + letterHeight / 5, middle = text.y + text.height / 2;
    CoverEdges best;
    int leastStrokes = std::numeric_limits<int>::max();
    for (int const lower : {0, 1, -1, 2, -2, 3, -3}) { // the middle of what is covered
        auto const left = sideFrom(text.x, -1, middle + lower), right = sideFrom(text.right(), 1, middle + lower);
        int const strokes = std::max(alike, left.stroke) + std::max(alike, right.stroke);
        if (strokes >= leastStrokes) continue;
        leastStrokes = strokes;
        best = {left.width, right.width, above + 2 * std::max(0, -lower), above + 2 * std::max(0, lower)};
    }
    return best;
}

}
