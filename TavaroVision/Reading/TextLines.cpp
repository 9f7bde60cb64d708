#include <TavaroVision/Reading/Private/TextLines.h>

#include <TavaroVision/Reading/Private/BitRows.h>
#include <TavaroVision/Reading/Private/TextPieces.h>

#include <algorithm>
#include <array>
#include <cstdint>
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
constexpr double growth = 1.5;       // of a line over its tallest word
constexpr double wordShape = 1.3;    // width over height of what is a word for sure
constexpr int smallLetters = 20;     // pixels; what is so low is no icon that lines stand beside
constexpr double fewestEdges = 0.04; // of a line's box
constexpr double mostEdges = 0.75;
constexpr double mostEdgesOfShort = 0.92; // of two or three letters with upright strokes: "PIN"
constexpr double shortLine = 4;           // heights
constexpr double flattest = 0.15;         // how much of a line's box has the colour that the letters are on
constexpr int flatness = 8;

bool isWord(PixelBox const& box) { return box.width >= wordShape * box.height || box.height <= smallLetters; }

int overlap(int from, int to, int otherFrom, int otherTo) { return std::min(to, otherTo) - std::max(from, otherFrom); }

/// Pieces that were joined.
struct Row {
    PixelBox box;
    int tallest = 0; // of the pieces that are wide as words are; 0 where none is
};

PixelBox united(PixelBox const& a, PixelBox const& b) {
    int const left = std::min(a.x, b.x), top = std::min(a.y, b.y);
    return {left, top, std::max(a.right(), b.right()) - left, std::max(a.bottom(), b.bottom()) - top};
}

bool areOfOneLine(Row const& first, Row const& second) {
    auto const &a = first.box, &b = second.box;
    auto const& [small, large] = a.height < b.height ? std::pair(a, b) : std::pair(b, a);
    if (overlap(a.y, a.bottom(), b.y, b.bottom()) < 0.6 * small.height) return false;
    // Noise would grow piece by piece.
    int const words = std::max(first.tallest, second.tallest);
    if (united(a, b).height > growth * (words > 0 ? words : large.height)) return false;
    int const letters = std::min(large.height, 4 * small.height);
    if (-overlap(a.x, a.right(), b.x, b.right()) > letterGaps * letters) return false;
    return large.height <= alike * small.height || isWord(large);
}

/// Joins rows of one line, each with the nearest that began left of it.
std::vector<Row> joinedOnce(std::vector<Row> rows, int height) {
    constexpr int shelf = 16; // pixels; lines are looked for on the shelves that a row touches
    std::ranges::sort(rows, {}, [](Row const& row) { return std::pair(row.box.x, row.box.y); });
    std::vector<Row> lines;
    std::vector<std::vector<std::size_t>> shelves(static_cast<std::size_t>(height) / shelf + 1);
    auto const shelve = [&](std::size_t number) {
        auto const& box = lines[number].box;
        for (int y = box.y / shelf; y <= (box.bottom() - 1) / shelf; ++y) {
            auto& there = shelves[static_cast<std::size_t>(y)];
            if (std::ranges::find(there, number) == there.end()) there.push_back(number);
        }
    };
    for (auto const& row : rows) {
        std::optional<std::size_t> nearest;
        for (int y = row.box.y / shelf; y <= (row.box.bottom() - 1) / shelf; ++y) {
            auto& there = shelves[static_cast<std::size_t>(y)];
            // What ended long before this row ends for all that follow.
            std::erase_if(there,
                          [&](auto number) { return lines[number].box.right() + letterGaps * highest < row.box.x; });
            for (auto const number : there)
                if (areOfOneLine(lines[number], row) &&
                    (!nearest || lines[number].box.right() > lines[*nearest].box.right()))
                    nearest = number;
        }
        auto const number = nearest.value_or(lines.size());
        if (nearest)
            lines[number] = {united(lines[number].box, row.box), std::max(lines[number].tallest, row.tallest)};
        else
            lines.push_back(row);
        shelve(number);
    }
    return lines;
}

std::vector<PixelBox> joined(std::vector<PixelBox> const& pieces, int height) {
    constexpr int mostTimes = 4;
    std::vector<Row> rows;
    for (auto const& piece : pieces) rows.push_back({piece, piece.width >= piece.height ? piece.height : 0});
    for (int i = 0; i < mostTimes; ++i) {
        auto const count = rows.size();
        rows = joinedOnce(std::move(rows), height);
        if (rows.size() == count) break;
    }
    std::vector<PixelBox> boxes;
    for (auto const& row : rows) boxes.push_back(row.box);
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

/// The columns of a box that go on beyond it above or below, as borders of fields do, and no letters.
std::vector<std::uint64_t> bordersIn(BitRows const& edges, PixelBox const& box) {
    auto const first = edges.row(box.y);
    std::vector<std::uint64_t> borders(first.begin(), first.end());
    for (int y = box.y + 1; y < box.bottom(); ++y)
        for (std::size_t i = 0; i < borders.size(); ++i) borders[i] &= edges.row(y)[i];
    auto const both = [&](int y, std::size_t i) {
        return y < 0 || y + 1 >= edges.height() ? 0 : edges.row(y)[i] & edges.row(y + 1)[i];
    };
    for (std::size_t i = 0; i < borders.size(); ++i) borders[i] &= both(box.y - 2, i) | both(box.bottom(), i);
    return borders;
}

bool hasInk(BitRows const& edges, PixelBox const& box, int x) {
    for (int y = box.y; y < box.bottom(); ++y)
        if (edges.count(y, x, x + 1) != 0) return true;
    return false;
}

/// The box without what has no ink around it.
PixelBox trimmed(BitRows const& edges, PixelBox const& box) {
    int left = box.x, right = box.right(), top = box.y, bottom = box.bottom();
    while (left < right && !hasInk(edges, box, left)) ++left;
    while (right > left && !hasInk(edges, box, right - 1)) --right;
    while (top < bottom && edges.count(top, left, right) == 0) ++top;
    while (bottom > top && edges.count(bottom - 1, left, right) == 0) --bottom;
    return {left, top, right - left, bottom - top};
}

/// The parts of a box between borders.
std::vector<PixelBox> parted(BitRows const& edges, PixelBox const& box) {
    auto const borders = bordersIn(edges, box);
    std::vector<PixelBox> parts;
    int from = box.x;
    for (auto border = nextRun(borders, box.x); border.left < box.right(); border = nextRun(borders, border.right)) {
        parts.push_back(trimmed(edges, {from, box.y, border.left - from, box.height}));
        from = border.right;
    }
    if (parts.empty()) return {box};
    parts.push_back(trimmed(edges, {from, box.y, box.right() - from, box.height}));
    return parts;
}

std::optional<TextLine> lineOf(GrayView const& picture, PixelBox const& within, BitRows const& edges, PixelBox box) {
    if (box.height < lowest || box.width < narrowest || box.width < wordShape * box.height) return std::nullopt;
    auto const band = bandOf(edges, box);
    double const share = double(band.edges) / (double(box.width) * box.height);
    bool const isShort = box.width < shortLine * box.height;
    if (share < fewestEdges || share > (isShort ? mostEdgesOfShort : mostEdges)) return std::nullopt;
    box.x += within.x;
    box.y += within.y;
    auto const ground = groundOf(picture, box);
    if (!ground.isFlat) return std::nullopt;
    int const letters = (band.bottom - band.top) * 4 / 3; // where there are small ones; else the box is of capitals
    return TextLine{.box = box, .letterHeight = std::min(box.height, letters), .isLightOnDark = ground.isDark};
}

void addLines(GrayView const& picture, PixelBox const& within, BitRows const& edges, PixelBox box,
              std::vector<TextLine>& lines) {
    if (box.height < lowest || box.height > highest) return;
    auto const band = bandOf(edges, box);
    // Small letters, and what may be above and below them; what is beyond is a border.
    int const letters = band.bottom - band.top;
    int const top = std::max(box.y, band.top - letters * 4 / 5);
    int const bottom = std::min(box.bottom(), band.bottom + letters * 3 / 5);
    for (auto const& part : parted(edges, {box.x, top, box.width, bottom - top}))
        if (auto const line = lineOf(picture, within, edges, part)) lines.push_back(*line);
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
    for (auto const& box : joined(pieces, within.height)) addLines(picture, within, edges, box, lines);
    std::ranges::sort(lines, {}, [](TextLine const& line) { return std::pair(line.box.y, line.box.x); });
    return lines;
}

}
