#include <TavaroCore/Looks/CubeLUT.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

float mixed(float a, float b, float t) { return a + (b - a) * t; }

/// Where a channel lies between two entries of its axis.
struct Place {
    std::size_t low = 0;
    std::size_t high = 0;
    float between = 0;
};

Place place(float value, int size) {
    auto const clamped = value > 0 ? std::min(value, 1.0f) : 0.0f; // what is not a number is 0
    auto const position = clamped * static_cast<float>(size - 1);
    auto const low = static_cast<std::size_t>(position);
    return {low, std::min(low + 1, static_cast<std::size_t>(size) - 1), position - static_cast<float>(low)};
}

}

CubeLUT CubeLUT::identity(int size) {
    CubeLUT table;
    table.size = std::clamp(size, 2, largestSize);
    auto const n = static_cast<std::size_t>(table.size);
    auto const step = 1.0f / static_cast<float>(table.size - 1);
    table.values.reserve(3 * n * n * n);
    for (int blue = 0; blue < table.size; ++blue)
        for (int green = 0; green < table.size; ++green)
            for (int red = 0; red < table.size; ++red)
                for (int const index : {red, green, blue}) table.values.push_back(static_cast<float>(index) * step);
    return table;
}

CubeLUT::Color CubeLUT::apply(Color const& color) const {
    auto const red = place(color[0], size);
    auto const green = place(color[1], size);
    auto const blue = place(color[2], size);
    auto const n = static_cast<std::size_t>(size);
    Color result;
    for (std::size_t c = 0; c < 3; ++c) {
        auto const along = [&](std::size_t b, std::size_t g) {
            auto const* row = values.data() + 3 * (b * n + g) * n + c;
            return mixed(row[3 * red.low], row[3 * red.high], red.between);
        };
        auto const plane = [&](std::size_t b) {
            return mixed(along(b, green.low), along(b, green.high), green.between);
        };
        result[c] = mixed(plane(blue.low), plane(blue.high), blue.between);
    }
    return result;
}

}
