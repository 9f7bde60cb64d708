#include <TavaroVision/Reading/Private/LineImage.h>

#include <TavaroVision/Reading/Private/TextLines.h>
#include <TavaroVision/Reading/ReaderTalk.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <span>

namespace tavaro {

namespace {

constexpr double margin = 0.18;     // of the letters' height, on each side
constexpr int imageHeight = 36;     // pixels; the engine would make it so
constexpr double narrowing = 0.85;  // letters so narrow are read as well, and in less time
constexpr double windowHeights = 4; // of a line: how far around a place its ground is looked for
constexpr int faintestInk = 24;     // less contrast than that is not stretched any further
constexpr int shades = 32;          // among which the ground is looked for
constexpr int shadeWidth = 256 / shades;

int areaMargin(TextLine const& line) { return std::max(2, static_cast<int>(std::lround(margin * line.letterHeight))); }

PixelBox areaOf(GrayView const& picture, TextLine const& line) {
    int const more = areaMargin(line);
    int const left = std::max(line.box.x - more, 0), top = std::max(line.box.y - more, 0);
    return {left, top, std::min(line.box.right() + more, picture.width) - left,
            std::min(line.box.bottom() + more, picture.height) - top};
}

/// How much ink each pixel of a part of a picture has: how far it is from its ground, whichever of both is light.
class Ink {
public:
    Ink(GrayView const& picture, PixelBox const& area)
        : picture_(picture)
        , area_(area)
        , values_(static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height)) {
        int const reach = std::max(1, static_cast<int>(windowHeights * area.height / 2));
        for (int x = 0; x < std::min(reach, area.width); ++x) count(x, 1);
        for (int x = 0; x < area.width; ++x) {
            if (x + reach < area.width) count(x + reach, 1);
            if (x - reach > 0) count(x - reach - 1, -1);
            take(x);
        }
    }

    std::span<float const> row(int y) const {
        auto const width = static_cast<std::size_t>(area_.width);
        return std::span(values_).subspan(static_cast<std::size_t>(y) * width, width);
    }
    /// Of nearly all of the ink.
    float strongest() const {
        std::array<int, 256> counts{};
        for (auto const value : values_) ++counts[static_cast<std::size_t>(value)];
        int left = static_cast<int>(values_.size()) / 100, value = 255;
        while (value > faintestInk && (left -= counts[static_cast<std::size_t>(value)]) >= 0) --value;
        return static_cast<float>(value);
    }

private:
    int pixel(int x, int y) const { return picture_.pixels[(area_.y + y) * picture_.stride + area_.x + x]; }

    void count(int x, int by) {
        for (int y = 0; y < area_.height; ++y) {
            auto& shade = shades_[static_cast<std::size_t>(pixel(x, y) / shadeWidth)];
            shade.count += by;
            shade.sum += by * pixel(x, y);
        }
    }

    void take(int x) {
        auto const ground = std::ranges::max_element(shades_, {}, &Shade::count);
        float const level = static_cast<float>(ground->sum) / static_cast<float>(std::max(ground->count, 1));
        auto* value = values_.data() + x;
        for (int y = 0; y < area_.height; ++y, value += area_.width)
            *value = std::abs(static_cast<float>(pixel(x, y)) - level);
    }

    struct Shade {
        int count = 0;
        int sum = 0;
    };
    GrayView const& picture_;
    PixelBox const area_;
    std::vector<float> values_;
    std::array<Shade, shades> shades_{}; // of the columns around the current one
};

/// The pixels that make one of another size: a cubic through them, wide enough that none is left out. They are taken
/// from a row that has `before` more at either end.
class Resampling {
public:
    Resampling(int from, int to) : scale_(double(from) / to), width_(std::max(1.0, scale_)) {
        taps_ = static_cast<int>(std::ceil(4 * width_));
        weights_.reserve(static_cast<std::size_t>(to) * taps());
        for (int i = 0; i < to; ++i) addWeights((i + 0.5) * scale_ - 0.5);
    }

    int before() const { return taps_; }
    std::size_t taps() const { return static_cast<std::size_t>(taps_); }
    float const* weights(int to) const { return weights_.data() + static_cast<std::size_t>(to) * taps(); }
    /// The first of the pixels that the weights are for.
    int first(int to) const { return firsts_[static_cast<std::size_t>(to)]; }

private:
    static double cubic(double t) { // Keys, 1981, a = −½
        t = std::abs(t);
        if (t < 1) return (1.5 * t - 2.5) * t * t + 1;
        return t < 2 ? ((-0.5 * t + 2.5) * t - 4) * t + 2 : 0;
    }

    void addWeights(double center) {
        int const first = static_cast<int>(std::floor(center - 2 * width_)) + 1;
        firsts_.push_back(first);
        double sum = 0;
        auto const begin = weights_.size();
        for (int tap = 0; tap < taps_; ++tap) {
            double const weight = cubic((first + tap - center) / width_);
            weights_.push_back(static_cast<float>(weight));
            sum += weight;
        }
        for (auto i = begin; i < weights_.size(); ++i) weights_[i] /= static_cast<float>(sum);
    }

    double scale_;
    double width_;
    int taps_ = 0;
    std::vector<int> firsts_;
    std::vector<float> weights_;
};

/// Draws the ink of an area with its size changed, row by row.
class LineDrawing {
public:
    LineDrawing(Ink const& ink, PixelBox const& area, LineImage& image)
        : ink_(ink)
        , area_(area)
        , image_(image)
        , down_(area.height, image.height)
        , across_(area.width, image.width)
        , row_(static_cast<std::size_t>(area.width + 2 * across_.before())) {}

    void draw() {
        float const perInk = 255 / ink_.strongest();
        auto* to = image_.pixels.data();
        for (int y = 0; y < image_.height; ++y) {
            gather(y);
            for (int x = 0; x < image_.width; ++x) *to++ = shadeAt(x, perInk);
        }
    }

private:
    /// A row of the image that is as wide as the area, with its ends repeated.
    void gather(int y) {
        auto const room = static_cast<std::size_t>(across_.before());
        auto const row = std::span(row_).subspan(room, static_cast<std::size_t>(area_.width));
        std::ranges::fill(row, 0.0F);
        for (std::size_t tap = 0; tap < down_.taps(); ++tap) {
            int const wanted = down_.first(y) + static_cast<int>(tap);
            auto const source = ink_.row(std::clamp(wanted, 0, area_.height - 1));
            auto const weight = down_.weights(y)[tap];
            for (std::size_t x = 0; x < row.size(); ++x) row[x] += weight * source[x];
        }
        std::fill_n(row_.begin(), room, row.front());
        std::fill_n(row_.rbegin(), room, row.back());
    }

    std::uint8_t shadeAt(int x, float perInk) const {
        auto const* const weights = across_.weights(x);
        auto const* const source = row_.data() + across_.before() + across_.first(x);
        float sum = 0;
        for (std::size_t tap = 0; tap < across_.taps(); ++tap) sum += weights[tap] * source[tap];
        return static_cast<std::uint8_t>(255.5F - std::clamp(sum * perInk, 0.0F, 255.0F));
    }

    Ink const& ink_;
    PixelBox const area_;
    LineImage& image_;
    Resampling const down_;
    Resampling const across_;
    std::vector<float> row_;
};

}

LineImage lineImage(GrayView const& picture, TextLine const& line) {
    LineImage image{.line = line.box, .area = areaOf(picture, line)};
    if (image.area.isEmpty()) return image;
    double const scale =
        std::min(double(imageHeight) / image.area.height, widestLineImage / (narrowing * image.area.width));
    image.width = std::max(1, static_cast<int>(std::lround(image.area.width * scale * narrowing)));
    image.height = std::max(1, static_cast<int>(std::lround(image.area.height * scale)));
    image.letterHeight = std::max(1, static_cast<int>(std::lround(line.letterHeight * scale)));
    image.pixels.resize(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height));
    Ink const ink(picture, image.area);
    LineDrawing(ink, image.area, image).draw();
    return image;
}

PixelBox inPicture(LineImage const& image, PixelBox const& box) {
    if (image.width <= 0 || image.height <= 0) return {};
    double const across = double(image.area.width) / image.width, down = double(image.area.height) / image.height;
    int const left = static_cast<int>(std::floor(box.x * across)), top = static_cast<int>(std::floor(box.y * down));
    return {image.area.x + left, image.area.y + top, static_cast<int>(std::ceil(box.right() * across)) - left,
            static_cast<int>(std::ceil(box.bottom() * down)) - top};
}

}
