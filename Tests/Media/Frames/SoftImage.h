#pragma once

#include <TavaroMedia/Frames/Image.h>

#include <cmath>
#include <cstdint>
#include <cstring>

namespace tavaro {

/// Of soft colours: what subsampling and five-bit formats take away of them stays small.
inline Image softImage(int width, int height) {
    Image image(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            auto const wave = [&](double phase) {
                return static_cast<std::uint8_t>(std::lround(128 + 90 * std::sin(x * 0.02 + y * 0.03 + phase)));
            };
            std::uint8_t const pixel[4] = {wave(0), wave(2), wave(4), 255};
            std::memcpy(image.row(y) + 4 * x, pixel, 4);
        }
    }
    return image;
}

}
