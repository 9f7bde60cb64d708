#include <TavaroAutomation/Pictures/Private/Downscaled.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tavaro {

namespace {

constexpr int channels = 3;

/// Calls `add(index, weight)` for each of `from` pixels that pixel `at` of `to` covers; the weights sum to 1.
template<class Add> void forEachCovered(int at, int from, int to, Add add) {
    double const begin = static_cast<double>(at) * from / to, end = static_cast<double>(at + 1) * from / to;
    for (int i = static_cast<int>(begin); i < end && i < from; ++i) {
        double const covered = std::min<double>(i + 1, end) - std::max<double>(i, begin);
        add(i, covered / (end - begin));
    }
}

std::vector<double> narrowed(std::uint8_t const* row, int from, int to) {
    std::vector<double> result(static_cast<std::size_t>(to) * channels);
    for (int x = 0; x < to; ++x) {
        forEachCovered(x, from, to, [&](int i, double weight) {
            for (int channel = 0; channel < channels; ++channel)
                result[static_cast<std::size_t>(x) * channels + channel] += weight * row[i * 4 + channel];
        });
    }
    return result;
}

}

Image downscaled(ImageView const& image, int width, int height) {
    Image result(width, height);
    std::vector<double> sums(static_cast<std::size_t>(width) * channels);
    std::vector<double> row;
    int rowIs = -1;
    for (int y = 0; y < height; ++y) {
        std::ranges::fill(sums, 0.0);
        forEachCovered(y, image.height, height, [&](int i, double weight) {
            if (rowIs != i) row = narrowed(image.row(i), image.width, width);
            rowIs = i;
            for (std::size_t k = 0; k < sums.size(); ++k) sums[k] += weight * row[k];
        });
        auto* to = result.row(y);
        for (int x = 0; x < width; ++x, to += 4) {
            for (int channel = 0; channel < channels; ++channel)
                to[channel] = static_cast<std::uint8_t>(
                    std::lround(sums[static_cast<std::size_t>(x) * channels + static_cast<std::size_t>(channel)]));
            to[3] = 255;
        }
    }
    return result;
}

}
