#include <TavaroMedia/GIF/Private/GIFDithering.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

namespace tavaro {

namespace {

constexpr int blockSide = 8;

// Levels between which a block and those around it pass softly; with more they hold letters or edges.
constexpr int softest = 1;
constexpr int hardest = 40;

// Of the ordered pattern, in levels: bands get a soft edge, and the pattern itself, which stays in place, costs little.
constexpr int swing = 1;

constexpr std::uint8_t clear = 255; // the palette's last

/// A level from −swing to swing; eight by eight of them are a Bayer pattern.
int patternAt(int x, int y) {
    int place = 0;
    for (int bit = 0; bit < 3; ++bit) place = place << 2 | ((x ^ y) >> bit & 1) << 1 | (y >> bit & 1);
    return place * (2 * swing + 1) / 64 - swing;
}

bool isClear(std::uint32_t argb) { return argb >> 24 < 128; }

}

struct GIFDithering::Range {
    std::array<int, 3> least{255, 255, 255};
    std::array<int, 3> most{0, 0, 0};

    void add(std::uint32_t argb) {
        auto const [red, green, blue] = ColorLevels::of(argb);
        std::array const levels{red, green, blue};
        for (std::size_t i = 0; i < 3; ++i) {
            least[i] = std::min(least[i], levels[i]);
            most[i] = std::max(most[i], levels[i]);
        }
    }
    void add(Range const& other) {
        for (std::size_t i = 0; i < 3; ++i) {
            least[i] = std::min(least[i], other.least[i]);
            most[i] = std::max(most[i], other.most[i]);
        }
    }
    int widest() const { return std::max({most[0] - least[0], most[1] - least[1], most[2] - least[2]}); }
};

GIFDithering::GIFDithering(int width, int height, GIFPalette const& palette)
    : width_(width)
    , height_(height)
    , palette_(palette)
    , search_(palette)
    , columns_((width + blockSide - 1) / blockSide)
    , rows_((height + blockSide - 1) / blockSide)
    , isSoft_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_))
    , source_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
    , shown_(source_.size()) {}

ffmpeg::Frame GIFDithering::draw(AVFrame const& picture) {
    findSoftBlocks(picture);
    for (int y = 0; y < height_; ++y)
        drawRow(reinterpret_cast<std::uint32_t const*>(picture.data[0] + std::ptrdiff_t{y} * picture.linesize[0]), y);
    isFirst_ = false;
    return indexed();
}

GIFDithering::Range GIFDithering::rangeOf(AVFrame const& picture, int column, int row) const {
    Range range;
    for (int y = row * blockSide; y < std::min((row + 1) * blockSide, height_); ++y) {
        auto const* pixels =
            reinterpret_cast<std::uint32_t const*>(picture.data[0] + std::ptrdiff_t{y} * picture.linesize[0]);
        for (int x = column * blockSide; x < std::min((column + 1) * blockSide, width_); ++x) range.add(pixels[x]);
    }
    return range;
}

void GIFDithering::findSoftBlocks(AVFrame const& picture) {
    std::vector<Range> ranges(isSoft_.size());
    auto const at = [&](int column, int row) { return static_cast<std::size_t>(row * columns_ + column); };
    for (int row = 0; row < rows_; ++row)
        for (int column = 0; column < columns_; ++column) ranges[at(column, row)] = rangeOf(picture, column, row);
    for (int row = 0; row < rows_; ++row) {
        for (int column = 0; column < columns_; ++column) {
            Range around;
            for (int v = std::max(row - 1, 0); v <= std::min(row + 1, rows_ - 1); ++v)
                for (int u = std::max(column - 1, 0); u <= std::min(column + 1, columns_ - 1); ++u)
                    around.add(ranges[at(u, v)]);
            auto const widest = around.widest();
            isSoft_[at(column, row)] = widest >= softest && widest <= hardest;
        }
    }
}

void GIFDithering::drawRow(std::uint32_t const* row, int y) {
    auto const start = static_cast<std::size_t>(y) * static_cast<std::size_t>(width_);
    auto* source = source_.data() + start;
    auto* shown = shown_.data() + start;
    auto const* isSoft = isSoft_.data() + static_cast<std::ptrdiff_t>(y / blockSide) * columns_;
    for (int x = 0; x < width_; ++x) {
        if (!isFirst_ && source[x] == row[x]) continue;
        source[x] = row[x];
        if (isClear(row[x])) {
            shown[x] = clear;
        } else {
            shown[x] = nearest(row[x], isSoft[x / blockSide] ? patternAt(x, y) : 0);
        }
    }
}

std::uint8_t GIFDithering::nearest(std::uint32_t argb, int pattern) {
    auto const [red, green, blue] = ColorLevels::of(argb);
    auto const moved = [&](int level) { return std::clamp(level + pattern, 0, 255); };
    return search_.nearest({moved(red), moved(green), moved(blue)});
}

ffmpeg::Frame GIFDithering::indexed() const {
    ffmpeg::Frame frame(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    frame->width = width_;
    frame->height = height_;
    frame->format = AV_PIX_FMT_PAL8;
    if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
    for (int y = 0; y < height_; ++y)
        std::memcpy(frame->data[0] + std::ptrdiff_t{y} * frame->linesize[0],
                    shown_.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width_),
                    static_cast<std::size_t>(width_));
    std::memcpy(frame->data[1], palette_.colors.data(), sizeof palette_.colors);
    return frame;
}

}
