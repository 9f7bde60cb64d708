#include <TavaroVision/Scanning/Private/ReadingOrder.h>

#include <TavaroVision/Scanning/Private/ScreenText.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <utility>

namespace tavaro {

namespace {

bool isOnRow(PixelBox const& a, PixelBox const& b) {
    int const shared = std::min(a.bottom(), b.bottom()) - std::max(a.y, b.y);
    return 5 * shared >= 3 * std::min(a.height, b.height);
}

bool goesOn(PlacedLine const& above, PlacedLine const& below) {
    auto const &a = above.box, &b = below.box;
    auto const height = std::max(above.letterHeight, below.letterHeight);
    bool const isAlike = 2 * std::min(above.letterHeight, below.letterHeight) >= height;
    bool const isBelow = b.y >= a.y + a.height / 2 && b.y - a.bottom() <= 3 * height;
    return isAlike && isBelow && std::min(a.right(), b.right()) > std::max(a.x, b.x) && !isOnRow(a, b);
}

}

std::vector<std::vector<std::size_t>> readingOrder(std::span<PlacedLine const> lines) {
    std::vector<std::size_t> order(lines.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::sort(order, {}, [&](std::size_t i) { return std::pair(lines[i].box.y, lines[i].box.x); });
    std::vector<std::vector<std::size_t>> columns;
    for (auto const line : order) {
        if (lines[line].words.empty()) continue;
        std::vector<std::size_t>* nearest = nullptr;
        auto const distance = [&](std::vector<std::size_t> const& column) {
            auto const &above = lines[column.back()].box, &below = lines[line].box;
            return std::pair(below.y - above.bottom(), std::abs(above.x - below.x));
        };
        for (auto& column : columns) {
            if (!goesOn(lines[column.back()], lines[line])) continue;
            if (!nearest || distance(column) < distance(*nearest)) nearest = &column;
        }
        if (nearest) {
            nearest->push_back(line);
        } else {
            columns.push_back({line});
        }
    }
    return columns;
}

std::optional<std::size_t> lineBefore(std::span<PlacedLine const> lines, std::size_t line) {
    std::optional<std::size_t> nearest;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i == line || lines[i].words.empty() || !isOnRow(lines[i].box, lines[line].box)) continue;
        if (lines[i].box.right() > lines[line].box.x + lines[line].letterHeight) continue;
        if (!nearest || lines[i].box.right() > lines[*nearest].box.right()) nearest = i;
    }
    return nearest;
}

}
