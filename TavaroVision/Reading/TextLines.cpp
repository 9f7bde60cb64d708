#include <TavaroVision/Reading/TextLines.h>

#include <TavaroVision/Reading/Private/BitRows.h>
#include <TavaroVision/Reading/Private/TextPieces.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>
#include <optional>

namespace tavaro {

namespace {

constexpr int longestStroke = 64; // pixels; what is longer straight down is a border
constexpr int lowest = 5, highest = 90;
constexpr int narrowest = 10;
constexpr double letterGaps = 2.5;   // heights of letters between two words of a line
constexpr double alike = 2.1;        // heights of pieces of one line
constexpr double wordShape = 1.3;    // width over height of what is a word for sure
constexpr int smallLetters = 20;     // pixels; what is so low is no icon that lines stand beside
constexpr double fewestEdges = 0.04; // of a line's box
constexpr double mostEdges = 0.75;
constexpr double flattest = 0.15; // how much of a line's box has the colour that the letters are on
constexpr int flatness = 8;

bool isWord(PixelBox const& box) { return box.width >= wordShape * box.height || box.height <= smallLetters; }

int overlap(int from, int to, int otherFrom, int otherTo) { return std::min(to, otherTo) - std::max(from, otherFrom); }

bool areOfOneLine(PixelBox const& a, PixelBox const& b) {
    auto const& [small, large] = a.height < b.height ? std::pair(a, b) : std::pair(b, a);
    if (overlap(a.y, a.bottom(), b.y, b.bottom()) < 0.6 * small.height) return false;
    if (-overlap(a.x, a.right(), b.x, b.right()) > letterGaps * large.height) return false;
    return large.height <= alike * small.height || isWord(large);
}

PixelBox united(PixelBox const& a, PixelBox const& b) {
    int const left = std::min(a.x, b.x), top = std::min(a.y, b.y);
    return {left, top, std::max(a.right(), b.right()) - left, std::max(a.bottom(), b.bottom()) - top};
}

/// Joins boxes of one line, each with the nearest that began left of it.
std::vector<PixelBox> joinedOnce(std::vector<PixelBox> boxes, int height) {
    constexpr int shelf = 16; // pixels; lines are looked for on the shelves that a box touches
    std::ranges::sort(boxes, {}, [](PixelBox const& box) { return std::pair(box.x, box.y); });
    std::vector<PixelBox> lines;
    std::vector<std::vector<std::size_t>> shelves(static_cast<std::size_t>(height) / shelf + 1);
    auto const shelve = [&](std::size_t number) {
        for (int y = lines[number].y / shelf; y <= (lines[number].bottom() - 1) / shelf; ++y) {
            auto& there = shelves[static_cast<std::size_t>(y)];
            if (std::ranges::find(there, number) == there.end()) there.push_back(number);
        }
    };
    for (auto const& box : boxes) {
        std::optional<std::size_t> nearest;
        for (int y = box.y / shelf; y <= (box.bottom() - 1) / shelf; ++y) {
            auto& there = shelves[static_cast<std::size_t>(y)];
            // What ended long before this box ends for all that follow.
            std::erase_if(there, [&](auto number) { return lines[number].right() + letterGaps * highest < box.x; });
            for (auto const number : there)
                if (areOfOneLine(lines[number], box) && (!nearest || lines[number].right() > lines[*nearest].right()))
                    nearest = number;
        }
        auto const number = nearest.value_or(lines.size());
        if (nearest)
            lines[number] = united(lines[number], box);
        else
            lines.push_back(box);
        shelve(number);
    }
    return lines;
}

std::vector<PixelBox> joined(std::vector<PixelBox> boxes, int height) {
    constexpr int mostTimes = 4;
    for (int i = 0; i < mostTimes; ++i) {
        auto const count = boxes.size();
        boxes = joinedOnce(std::move(boxes), height);
        if (boxes.size() == count) break;
    }
    return boxes;
}

/// Of the rows that have at least half as many edges as the fullest: from the first to after the last. They are those
/// of the small letters, or of all where there are capitals only.
struct Band {
    int top = 0;
    int bottom = 0;
    int edges = 0; // of the whole box
};

Band bandOf(BitRows const& edges, PixelBox const& box) {
    std::array<int, highest> counts{};
    Band band{.top = box.y, .bottom = box.y};
    int most = 0;
    for (int y = 0; y < box.height; ++y) {
        auto const count = edges.count(box.y + y, box.x, box.right());
        counts[static_cast<std::size_t>(y)] = count;
        band.edges += count;
        most = std::max(most, count);
    }
    auto const isFull = [&](int y) { return 2 * counts[static_cast<std::size_t>(y)] >= most; };
    int first = 0, last = box.height - 1;
    while (first < last && !isFull(first)) ++first;
    while (last > first && !isFull(last)) --last;
    return {.top = box.y + first, .bottom = box.y + last + 1, .edges = band.edges};
}

struct Ground {
    bool isFlat = false;
    bool isDark = false;
};

/// What the letters of a box of the picture are on: the commonest brightness. Every second pixel of every second row is
/// enough to know it.
Ground groundOf(GrayView const& picture, PixelBox const& box) {
    std::array<int, 256> counts{};
    for (int y = box.y; y < box.bottom(); y += 2)
        for (int x = box.x; x < box.right(); x += 2) ++counts[picture.pixels[y * picture.stride + x]];
    int const most = static_cast<int>(std::ranges::max_element(counts) - counts.begin());
    int flat = 0, total = 0, below = 0, above = 0;
    for (int value = 0; value < 256; ++value) {
        int const count = counts[static_cast<std::size_t>(value)];
        total += count;
        if (std::abs(value - most) <= flatness)
            flat += count;
        else
            (value < most ? below : above) += count * std::abs(value - most);
    }
    return {.isFlat = flat >= flattest * total, .isDark = above > below};
}

bool isSet(BitRows const& edges, int x, int y) { return edges.count(y, x, x + 1) != 0; }

/// Whether a column goes on beyond the box above or below, as the border of a field does, and no letter.
bool isBorder(BitRows const& edges, PixelBox const& box, int x) {
    constexpr int beyond = 2; // pixels
    for (int y = box.y; y < box.bottom(); ++y)
        if (!isSet(edges, x, y)) return false;
    bool const isAbove = box.y >= beyond && isSet(edges, x, box.y - 1) && isSet(edges, x, box.y - beyond);
    int const below = box.bottom() + beyond - 1;
    return isAbove || (below < edges.height() && isSet(edges, x, below - 1) && isSet(edges, x, below));
}

bool hasInk(BitRows const& edges, PixelBox const& box, int x) {
    for (int y = box.y; y < box.bottom(); ++y)
        if (isSet(edges, x, y)) return true;
    return false;
}

/// The box without borders near its ends, and what is beyond them.
PixelBox withoutBorders(BitRows const& edges, PixelBox const& box) {
    int left = box.x, right = box.right();
    int const reach = std::min(box.width / 2, box.height);
    for (int x = box.x; x < box.x + reach; ++x)
        if (isBorder(edges, box, x)) left = x + 1;
    for (int x = box.right() - reach; x < box.right(); ++x)
        if (isBorder(edges, box, x)) {
            right = x;
            break;
        }
    if (left == box.x && right == box.right()) return box;
    while (left < right && !hasInk(edges, box, left)) ++left;
    while (right > left && !hasInk(edges, box, right - 1)) --right;
    int top = box.y, bottom = box.bottom();
    while (top < bottom && edges.count(top, left, right) == 0) ++top;
    while (bottom > top && edges.count(bottom - 1, left, right) == 0) --bottom;
    return {left, top, right - left, bottom - top};
}

std::optional<TextLine> lineOf(GrayView const& picture, PixelBox const& within, BitRows const& edges, PixelBox box) {
    if (box.height < lowest || box.height > highest) return std::nullopt;
    auto const band = bandOf(edges, box);
    // Small letters, and what may be above and below them; what is beyond is a border.
    int const letters = band.bottom - band.top;
    int const top = std::max(box.y, band.top - letters * 4 / 5);
    int const bottom = std::min(box.bottom(), band.bottom + letters * 3 / 5);
    box = withoutBorders(edges, {box.x, top, box.width, bottom - top});
    if (box.height < lowest || box.width < narrowest || box.width < wordShape * box.height) return std::nullopt;
    double const share = double(band.edges) / (double(box.width) * box.height);
    if (share < fewestEdges || share > mostEdges) return std::nullopt;
    box.x += within.x;
    box.y += within.y;
    auto const ground = groundOf(picture, box);
    if (!ground.isFlat) return std::nullopt;
    return TextLine{.box = box, .letterHeight = std::min(box.height, letters * 4 / 3), .isLightOnDark = ground.isDark};
}

PixelBox clipped(PixelBox const& box, GrayView const& picture) {
    int const left = std::clamp(box.x, 0, picture.width), top = std::clamp(box.y, 0, picture.height);
    return {left, top, std::clamp(box.right(), left, picture.width) - left,
            std::clamp(box.bottom(), top, picture.height) - top};
}

}

std::vector<TextLine> textLines(GrayView const& picture, PixelBox const& wanted) {
    auto const within = clipped(wanted, picture);
    if (within.width < narrowest || within.height < lowest) return {};
    auto edges = edgesOf(picture, within);
    edges.clearColumns(longestStroke);
    auto pieces = textPieces(edges);
    std::erase_if(pieces, [](PixelBox const& box) { return box.height > highest; });
    std::vector<TextLine> lines;
    for (auto const& box : joined(std::move(pieces), within.height))
        if (auto const line = lineOf(picture, within, edges, box)) lines.push_back(*line);
    std::ranges::sort(lines, {}, [](TextLine const& line) { return std::pair(line.box.y, line.box.x); });
    return lines;
}

}
