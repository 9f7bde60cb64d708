#include <TavaroRender/Renderer/Private/BoxBlur.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace tavaro {

namespace {

constexpr int passes = 3;

/// Means of windows of 2 × radius + 1 pixels of one line. `line` and `blurred` hold `count` RGBA pixels.
void blurLine(std::uint8_t const* line, std::uint8_t* blurred, int count, int radius) {
    unsigned const window = static_cast<unsigned>(2 * radius + 1);
    auto const pixel = [&](int i) { return line + 4 * std::clamp(i, 0, count - 1); };
    unsigned sum[4] = {};
    for (int i = -radius; i <= radius; ++i) {
        for (int c = 0; c < 4; ++c) sum[c] += pixel(i)[c];
    }
    for (int i = 0; i < count; ++i) {
        auto const* leaves = pixel(i - radius);
        auto const* enters = pixel(i + radius + 1);
        for (int c = 0; c < 4; ++c) {
            blurred[4 * i + c] = static_cast<std::uint8_t>((sum[c] + window / 2) / window);
            sum[c] += enters[c];
            sum[c] -= leaves[c];
        }
    }
}

}

void boxBlur(Image& image, int radius) {
    int const longest = std::max(image.width(), image.height());
    if (radius < 1 || image.isEmpty()) return;
    radius = std::min(radius, longest);
    std::vector<std::uint8_t> line(4 * static_cast<std::size_t>(longest));
    std::vector<std::uint8_t> blurred(line.size());
    for (int pass = 0; pass < passes; ++pass) {
        for (int y = 0; y < image.height(); ++y) {
            auto const bytes = 4 * static_cast<std::size_t>(image.width());
            std::memcpy(line.data(), image.row(y), bytes);
            blurLine(line.data(), image.row(y), image.width(), radius);
        }
        for (int x = 0; x < image.width(); ++x) {
            for (int y = 0; y < image.height(); ++y) std::memcpy(&line[4 * y], image.row(y) + 4 * x, 4);
            blurLine(line.data(), blurred.data(), image.height(), radius);
            for (int y = 0; y < image.height(); ++y) std::memcpy(image.row(y) + 4 * x, &blurred[4 * y], 4);
        }
    }
}

}
