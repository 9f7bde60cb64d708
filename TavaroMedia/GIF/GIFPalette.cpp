#include <TavaroMedia/GIF/GIFPalette.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include <TavaroMedia/Frames/Private/EncoderPlanes.h>
#include <TavaroMedia/GIF/Private/ColorCounts.h>

namespace tavaro {

namespace {

constexpr std::size_t colorCount = 255; // beside the one that shows through
constexpr int rounds = 6;               // of moving the palette's colours; more hardly change anything

using Channel = double CountedColor::*;
constexpr std::array<Channel, 3> channels{&CountedColor::red, &CountedColor::green, &CountedColor::blue};

double squaredDistance(CountedColor const& a, CountedColor const& b) {
    double sum = 0;
    for (auto const channel : channels) sum += (a.*channel - b.*channel) * (a.*channel - b.*channel);
    return sum;
}

/// Colours that are to become one of the palette.
struct Box {
    std::span<CountedColor> colors;
    CountedColor mean;
    Channel widest = channels[0];
    double error = 0; // of the widest channel: the sum of squared differences from its mean

    explicit Box(std::span<CountedColor> inside) : colors(inside) {
        for (auto const& color : colors) mean.count += color.count;
        for (auto const channel : channels) measure(channel);
    }

    void measure(Channel channel) {
        double sum = 0;
        double squares = 0;
        for (auto const& color : colors) {
            sum += color.count * color.*channel;
            squares += color.count * color.*channel * color.*channel;
        }
        mean.*channel = sum / mean.count;
        auto const variation = squares - sum * sum / mean.count;
        if (variation > error) {
            error = variation;
            widest = channel;
        }
    }

    /// Where the colours above the mean of the widest channel begin.
    std::size_t split() {
        auto const isBelow = [&](CountedColor const& color) { return color.*widest < mean.*widest; };
        auto const above = std::partition(colors.begin(), colors.end(), isBelow);
        return static_cast<std::size_t>(above - colors.begin());
    }
};

/// Boxes of colours, the worst split again and again; together all of `colors`.
std::vector<CountedColor> splitColors(std::vector<CountedColor>& colors) {
    std::vector<Box> boxes{Box(colors)};
    while (boxes.size() < colorCount) {
        auto const worst = std::ranges::max_element(boxes, {}, &Box::error);
        auto const inside = worst->colors;
        auto const at = worst->error > 1e-3 ? worst->split() : 0;
        if (at == 0 || at == inside.size()) break;
        *worst = Box(inside.first(at));
        boxes.emplace_back(inside.subspan(at));
    }
    std::vector<CountedColor> means;
    for (auto const& box : boxes) means.push_back(box.mean);
    return means;
}

std::size_t nearest(std::vector<CountedColor> const& palette, CountedColor const& color) {
    std::size_t best = 0;
    auto distance = std::numeric_limits<double>::max();
    for (std::size_t i = 0; i < palette.size(); ++i) {
        auto const other = squaredDistance(palette[i], color);
        if (other < distance) {
            distance = other;
            best = i;
        }
    }
    return best;
}

/// What the pixels of one colour of the palette are like.
struct Share {
    CountedColor sum;
    CountedColor most; // the commonest colour of them

    void add(CountedColor const& color) {
        for (auto const channel : channels) sum.*channel += color.count * color.*channel;
        sum.count += color.count;
        if (color.count > most.count) most = color;
    }

    /// Of areas of one colour it is that colour itself, since the eye sees them change.
    CountedColor center() const {
        if (most.count * 2 > sum.count) return most;
        auto mean = sum;
        for (auto const channel : channels) mean.*channel /= sum.count;
        return mean;
    }
};

void improve(std::vector<CountedColor>& palette, std::vector<CountedColor> const& colors) {
    for (int round = 0; round < rounds; ++round) {
        std::vector<Share> shares(palette.size());
        for (auto const& color : colors) shares[nearest(palette, color)].add(color);
        for (std::size_t i = 0; i < palette.size(); ++i)
            if (shares[i].sum.count > 0) palette[i] = shares[i].center();
    }
}

std::uint32_t packed(CountedColor const& color) {
    std::uint32_t argb = 255;
    for (auto const channel : channels) argb = argb << 8 | static_cast<std::uint32_t>(std::lround(color.*channel));
    return argb;
}

}

struct GIFPaletteMaker::State {
    EncoderPicturePool pool;
    ColorCounts counts;
};

GIFPaletteMaker::GIFPaletteMaker(int width, int height)
    : state_(new State{EncoderPicturePool(width, height, AV_PIX_FMT_RGB32), {}}) {}
GIFPaletteMaker::~GIFPaletteMaker() = default;

EncoderPicture GIFPaletteMaker::picture() { return state_->pool.take(); }

void GIFPaletteMaker::append(EncoderPicture picture, double) {
    auto const& frame = *picture.planes().frame;
    for (int y = 0; y < frame.height; ++y)
        state_->counts.add(
            reinterpret_cast<std::uint32_t const*>(frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0]),
            static_cast<std::size_t>(frame.width));
}

GIFPalette GIFPaletteMaker::palette() {
    GIFPalette palette;
    palette.colors.fill(0xFF000000);
    palette.colors.back() = 0x00FFFFFF;
    auto colors = state_->counts.colors();
    if (colors.empty()) return palette;
    auto chosen = splitColors(colors);
    improve(chosen, colors);
    std::ranges::transform(chosen, palette.colors.begin(), packed);
    return palette;
}

}
