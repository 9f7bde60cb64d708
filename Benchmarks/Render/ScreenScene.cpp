#include "ScreenScene.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace tavaro {

namespace {

struct Colour {
    std::uint8_t r, g, b;
};

constexpr Colour page{30, 32, 40};
constexpr Colour sideBar{24, 25, 31};
constexpr Colour bar{42, 45, 56};
constexpr std::array<Colour, 5> inks{
    {{220, 223, 228}, {198, 120, 221}, {152, 195, 121}, {97, 175, 239}, {92, 99, 112}}};

std::uint32_t scrambled(std::uint32_t x) {
    x ^= x >> 16;
    x *= 0x7FEB352Du;
    x ^= x >> 15;
    x *= 0x846CA68Bu;
    return x ^ (x >> 16);
}

void fill(Image& image, int x0, int y0, int x1, int y1, Colour colour) {
    for (int y = std::max(y0, 0); y < std::min(y1, image.height()); ++y) {
        auto* pixel = image.row(y) + 4 * std::max(x0, 0);
        for (int x = std::max(x0, 0); x < std::min(x1, image.width()); ++x, pixel += 4) {
            pixel[0] = colour.r;
            pixel[1] = colour.g;
            pixel[2] = colour.b;
            pixel[3] = 255;
        }
    }
}

/// A letter of 5 × 7 dots whose shape is its number.
void drawLetter(Image& image, int x, int y, int dot, std::uint32_t letter, Colour colour) {
    std::uint32_t const shape = scrambled(letter + 17) | (scrambled(letter) << 7);
    for (int i = 0; i < 35; ++i) {
        if (!((i < 32 ? shape >> i : letter >> (i - 32)) & 1)) continue;
        fill(image, x + i % 5 * dot, y + i / 5 * dot, x + i % 5 * dot + dot, y + i / 5 * dot + dot, colour);
    }
}

struct Text {
    int left, top, right, bottom, dot;
};

void drawLines(Image& image, Text const& text, int scrolled, int typed) {
    int const lineHeight = 11 * text.dot;
    int const advance = 6 * text.dot;
    int const first = scrolled / lineHeight;
    int const rows = (text.bottom - text.top) / lineHeight + 1;
    for (int row = 0; row < rows; ++row) {
        auto const line = static_cast<std::uint32_t>(first + row);
        int const y = text.top + row * lineHeight - scrolled % lineHeight;
        if (y < text.top || y + lineHeight > text.bottom) continue;
        int const indent = static_cast<int>(scrambled(line * 3) % 4) * 4;
        int length = static_cast<int>(scrambled(line) % 60);
        if (row == rows / 2) length = typed;
        for (int i = 0; i < length; ++i) {
            auto const letter = scrambled(line * 131 + static_cast<std::uint32_t>(i)) % 64;
            if (letter < 9) continue; // a blank
            int const x = text.left + (indent + i) * advance;
            if (x + advance > text.right) break;
            drawLetter(image, x, y, text.dot, letter,
                       inks[scrambled(line * 7 + static_cast<std::uint32_t>(i) / 6) % 5]);
        }
    }
}

}

void drawScreenScene(Image& image, int frame) {
    int const w = image.width();
    int const h = image.height();
    int const dot = std::max(h / 540, 1);
    int const period = frame / 150; // every two and a half seconds half a second of scrolling
    int const scrolled = (period * 30 + std::clamp(frame % 150 - 120, 0, 30)) * 6 * dot;
    fill(image, 0, 0, w, h, page);
    fill(image, 0, 0, w, h / 20, bar);
    fill(image, 0, h / 20, w / 6, h, sideBar);
    drawLines(image, {w / 60, h / 12, w / 6, h, dot}, 0, 12);
    drawLines(image, {w / 5, h / 12, w, h - h / 30, dot}, scrolled, frame % 150 / 5);
}

}
