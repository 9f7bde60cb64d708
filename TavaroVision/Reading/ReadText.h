#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tavaro {

/// A part of a picture; whole pixels from the top left.
struct PixelBox {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int right() const { return x + width; }   // one past the last
    int bottom() const { return y + height; } // likewise
    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool operator==(PixelBox const&) const = default;
};

/// The brightness of a picture that somebody else owns: 0 is black, 255 white.
struct GrayView {
    std::uint8_t const* pixels = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t stride = 0; // bytes from a row to the next
};

struct ReadWord {
    std::string text; // UTF-8, no spaces
    PixelBox box;
    float confidence = 0; // 0…1
};

/// Words of one line, from left to right.
struct ReadLine {
    PixelBox box;
    std::vector<ReadWord> words;
};

}
