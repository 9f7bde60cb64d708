#include <TavaroRender/Layers/Private/AlphaBlur.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace tavaro {

namespace {

constexpr int passes = 3;

/// Division by the window's length as a multiplication; off by less than one part in 255.
struct Window {
    explicit Window(int radius) : reciprocal((1u << 16) / static_cast<unsigned>(2 * radius + 1)) {}
    std::uint8_t mean(unsigned sum) const { return static_cast<std::uint8_t>((sum * reciprocal + (1u << 15)) >> 16); }
    unsigned reciprocal;
};

/// Row by row. `line` holds `radius` zeros, the row, and `radius` zeros.
void blurRow(std::uint8_t* row, int width, int radius, std::vector<std::uint8_t>& line) {
    Window const window(radius);
    std::memcpy(line.data() + radius, row, static_cast<std::size_t>(width));
    auto const* const leaves = line.data();
    auto const* const enters = line.data() + 2 * radius;
    unsigned sum = 0;
    for (int i = 0; i < 2 * radius; ++i) sum += leaves[i];
    for (int x = 0; x < width; ++x) {
        sum += enters[x];
        row[x] = window.mean(sum);
        sum -= leaves[x];
    }
}

/// All columns at once, a row of sums moving down; `source` is a copy of the rows, without gaps.
void blurColumns(std::uint8_t* alphas, int width, int height, std::ptrdiff_t stride, int radius,
                 std::vector<std::uint8_t> const& source, std::vector<unsigned>& sums) {
    Window const window(radius);
    auto const rowOf = [&](int y) {
        return source.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    };
    std::fill(sums.begin(), sums.end(), 0);
    for (int y = 0; y < std::min(radius, height); ++y) {
        for (int x = 0; x < width; ++x) sums[static_cast<std::size_t>(x)] += rowOf(y)[x];
    }
    for (int y = 0; y < height; ++y) {
        if (y + radius < height) {
            auto const* enters = rowOf(y + radius);
            for (int x = 0; x < width; ++x) sums[static_cast<std::size_t>(x)] += enters[x];
        }
        auto* to = alphas + y * stride;
        for (int x = 0; x < width; ++x) to[x] = window.mean(sums[static_cast<std::size_t>(x)]);
        if (y - radius >= 0) {
            auto const* leaves = rowOf(y - radius);
            for (int x = 0; x < width; ++x) sums[static_cast<std::size_t>(x)] -= leaves[x];
        }
    }
}

}

void blurAlpha(std::uint8_t* alphas, int width, int height, std::ptrdiff_t stride, int radius) {
    radius = std::min(radius, std::max(width, height));
    if (radius < 1 || width < 1 || height < 1) return;
    std::vector<std::uint8_t> line(static_cast<std::size_t>(width + 2 * radius), 0);
    std::vector<std::uint8_t> source(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    std::vector<unsigned> sums(static_cast<std::size_t>(width));
    for (int pass = 0; pass < passes; ++pass) {
        for (int y = 0; y < height; ++y) {
            blurRow(alphas + y * stride, width, radius, line);
            std::memcpy(source.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width),
                        alphas + y * stride, static_cast<std::size_t>(width));
        }
        blurColumns(alphas, width, height, stride, radius, source, sums);
    }
}

}
