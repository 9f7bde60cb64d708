#include "FilmScenes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include <cairo.h>

namespace tavaro {

namespace {

std::uint32_t scrambled(std::uint32_t x) {
    x ^= x >> 16;
    x *= 0x7FEB352Du;
    x ^= x >> 15;
    x *= 0x846CA68Bu;
    return x ^ (x >> 16);
}

double unit(std::uint32_t x) { return scrambled(x) / 4294967296.0; }

std::uint8_t byteOf(double level) { return static_cast<std::uint8_t>(std::clamp(level, 0.0, 255.0) + 0.5); }

using Pixel = std::array<double, 3>;

void put(std::uint8_t* to, Pixel const& pixel) {
    for (std::size_t i = 0; i < 3; ++i) to[i] = byteOf(pixel[i]);
    to[3] = 255;
}

/// Between the four pixels around a point; the edge goes on for ever.
Pixel sampled(Image const& image, double x, double y) {
    x = std::clamp(x, 0.0, image.width() - 1.001);
    y = std::clamp(y, 0.0, image.height() - 1.001);
    auto const left = static_cast<int>(x);
    auto const top = static_cast<int>(y);
    auto const* upper = image.view().row(top) + 4 * left;
    auto const* lower = image.view().row(top + 1) + 4 * left;
    Pixel pixel{};
    for (std::size_t i = 0; i < 3; ++i) {
        auto const above = upper[i] + (upper[4 + i] - upper[i]) * (x - left);
        auto const below = lower[i] + (lower[4 + i] - lower[i]) * (x - left);
        pixel[i] = above + (below - above) * (y - top);
    }
    return pixel;
}

// ---- the page

std::string wordOf(std::uint32_t number) {
    static constexpr std::string_view letters = "etaoinshrdlucmfwypvbgkjqxzETAS019(){}=;.";
    std::string word;
    auto const length = 2 + scrambled(number) % 8;
    for (std::uint32_t i = 0; i < length; ++i) {
        auto const chance = unit(number * 31 + i);
        word += letters[static_cast<std::size_t>(chance * chance * static_cast<double>(letters.size()))];
    }
    return word;
}

std::string lineOf(std::uint32_t number) {
    std::string line(2 * (scrambled(number * 3) % 5), ' ');
    auto const words = scrambled(number * 5) % 14;
    for (std::uint32_t i = 0; i < words; ++i) line += wordOf(number * 97 + i) + " ";
    return line;
}

struct Face {
    double size;
    double lineHeight;
};

Face faceFor(int height) { return {height / 68.0, height / 42.0}; }

/// A cairo surface over an image, whose red and blue are exchanged before and after.
class Canvas {
public:
    explicit Canvas(Image& image)
        : surface_(cairo_image_surface_create_for_data(image.row(0), CAIRO_FORMAT_RGB24, image.width(), image.height(),
                                                       static_cast<int>(image.row(1) - image.row(0))))
        , context_(cairo_create(surface_)) {}
    ~Canvas() {
        cairo_destroy(context_);
        cairo_surface_destroy(surface_);
    }
    Canvas(Canvas const&) = delete;

    void write(std::string const& text, double x, double y, double size, Pixel const& color) {
        cairo_select_font_face(context_, "monospace", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
        cairo_set_font_size(context_, size);
        cairo_set_source_rgb(context_, color[2] / 255, color[1] / 255, color[0] / 255); // the image is red first
        cairo_move_to(context_, x, y);
        cairo_show_text(context_, text.c_str());
    }

private:
    cairo_surface_t* surface_;
    cairo_t* context_;
};

void clear(Image& image, Pixel const& color) {
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) put(image.row(y) + 4 * x, color);
}

/// Three screens of lines.
Image longPage(int width, int height) {
    static constexpr std::array<Pixel, 4> inks{{{36, 41, 47}, {130, 80, 223}, {10, 110, 60}, {207, 34, 46}}};
    Image image(width, 3 * height);
    clear(image, {255, 255, 255});
    Canvas canvas(image);
    auto const [size, lineHeight] = faceFor(height);
    for (int line = 1; line * lineHeight < image.height(); ++line) {
        auto const number = static_cast<std::uint32_t>(line);
        canvas.write(lineOf(number), width / 8.0, line * lineHeight, size, inks[scrambled(number) % inks.size()]);
        canvas.write(std::to_string(line), width / 12.0, line * lineHeight, size, {150, 156, 164});
    }
    return image;
}

// ---- the land

double noise(double x, double y, std::uint32_t octave) {
    auto const column = static_cast<int>(std::floor(x));
    auto const row = static_cast<int>(std::floor(y));
    auto const corner = [&](int dx, int dy) {
        return unit(static_cast<std::uint32_t>((column + dx) * 7919 + (row + dy) * 104729) + octave * 1299709);
    };
    auto const ease = [](double t) { return t * t * (3 - 2 * t); };
    auto const u = ease(x - column);
    auto const v = ease(y - row);
    auto const above = corner(0, 0) + (corner(1, 0) - corner(0, 0)) * u;
    auto const below = corner(0, 1) + (corner(1, 1) - corner(0, 1)) * u;
    return above + (below - above) * v;
}

double height(double x, double y) {
    double sum = 0;
    double weight = 0.35;
    for (std::uint32_t octave = 0; octave < 8; ++octave, weight *= 0.7, x *= 2, y *= 2)
        sum += weight * (noise(x, y, octave) - 0.5);
    return sum;
}

Image land(int width, int height_) {
    Image image(width * 3 / 2, height_ * 3 / 2);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            auto const level = height(4.0 * x / height_, 4.0 * y / height_);
            auto const tint = height(2.0 * y / height_ + 40, 2.0 * x / height_);
            auto const light = 120 + 260 * level;
            put(image.row(y) + 4 * x, {light + 90 * tint, light + 20, light - 110 * tint});
        }
    }
    return image;
}

}

std::string_view nameOf(FilmScene scene) {
    static constexpr std::array<std::string_view, 3> names{"page", "tour", "landscape"};
    return names[static_cast<std::size_t>(scene)];
}

FilmSceneDrawing::FilmSceneDrawing(FilmScene scene, int width, int height)
    : scene_(scene)
    , width_(width)
    , height_(height)
    , still_(scene == FilmScene::landscape ? land(width, height) : longPage(width, height))
    , page_(width, height) {}

void FilmSceneDrawing::draw(Image& image, int frame) {
    switch (scene_) {
    case FilmScene::page: drawPage(image, frame); break;
    case FilmScene::tour: drawTour(image, frame); break;
    case FilmScene::landscape: drawLandscape(image, frame); break;
    }
}

// Two seconds of typing, half a second of scrolling.
void FilmSceneDrawing::drawPage(Image& image, int frame) const {
    auto const [size, lineHeight] = faceFor(height_);
    auto const turns = std::floor(frame / 150.0) + std::clamp((frame % 150 - 120) / 30.0, 0.0, 1.0);
    auto const scrolled = static_cast<int>(turns * 12 * lineHeight) % (2 * height_);
    for (int y = 0; y < height_; ++y)
        std::memcpy(image.row(y), still_.view().row(y + scrolled), 4 * static_cast<std::size_t>(width_));
    std::string const text = lineOf(777) + lineOf(778) + lineOf(779);
    Canvas canvas(image);
    canvas.write(text.substr(0, static_cast<std::size_t>(frame % 150) / 4), width_ / 8.0, height_ / 2.0, size,
                 {36, 41, 47});
}

void FilmSceneDrawing::drawTour(Image& image, int frame) {
    drawPage(page_, frame);
    auto const seconds = frame / 60.0;
    auto const zoom = 1 + 0.8 * std::clamp(std::sin(seconds * 1.6 - 0.4) * 1.4, 0.0, 1.0);
    auto const scale = zoom * 0.88;
    auto const centerX = width_ * (0.5 - 0.2 * (zoom - 1));
    auto const centerY = height_ * (0.5 - 0.15 * (zoom - 1));
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            auto const u = (x - width_ / 2.0) / scale + centerX;
            auto const v = (y - height_ / 2.0) / scale + centerY;
            auto const t = (x + y) / static_cast<double>(width_ + height_);
            auto const inside = u >= 0 && v >= 0 && u < width_ && v < height_;
            put(image.row(y) + 4 * x, inside ? sampled(page_, u, v) : Pixel{80 + 70 * t, 70 - 20 * t, 200 + 30 * t});
        }
    }
}

void FilmSceneDrawing::drawLandscape(Image& image, int frame) const {
    auto const seconds = frame / 60.0;
    auto const zoom = 1.1 + 0.08 * std::sin(seconds * 0.9);
    auto const left = width_ * (0.2 + 0.12 * std::sin(seconds * 1.9));
    auto const top = height_ * (0.2 + 0.1 * std::cos(seconds * 1.4));
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            auto pixel = sampled(still_, left + x / zoom, top + y / zoom);
            auto const grain = 4 * (unit(static_cast<std::uint32_t>((frame * height_ + y) * width_ + x)) - 0.5);
            for (auto& level : pixel) level += grain;
            put(image.row(y) + 4 * x, pixel);
        }
    }
}

}
