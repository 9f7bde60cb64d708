#include <TavaroMedia/GIF/Private/GIFColors.h>

#include <cstring>
#include <new>

namespace tavaro {

namespace {

// Squared distance that is not seen between one pixel and the next, where both differ anyway.
constexpr int unseen = 6;

constexpr std::uint8_t clear = 255; // the palette's last

bool isClear(std::uint32_t argb) { return argb >> 24 < 128; }

/// Whether the pixel is part of no area of one colour.
bool isAlone(std::uint32_t const* row, int x, int width) {
    return x > 0 && x + 1 < width && row[x] != row[x - 1] && row[x] != row[x + 1];
}

}

GIFColors::GIFColors(int width, int height, GIFPalette const& palette)
    : width_(width)
    , height_(height)
    , palette_(palette)
    , search_(palette)
    , source_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
    , shown_(source_.size()) {}

ffmpeg::Frame GIFColors::draw(AVFrame const& picture) {
    for (int y = 0; y < height_; ++y)
        drawRow(reinterpret_cast<std::uint32_t const*>(picture.data[0] + std::ptrdiff_t{y} * picture.linesize[0]), y);
    isFirst_ = false;
    return indexed();
}

void GIFColors::drawRow(std::uint32_t const* row, int y) {
    auto const start = static_cast<std::size_t>(y) * static_cast<std::size_t>(width_);
    auto* source = source_.data() + start;
    auto* shown = shown_.data() + start;
    for (int x = 0; x < width_; ++x) {
        if (!isFirst_ && source[x] == row[x]) continue;
        source[x] = row[x];
        auto const color = ColorLevels::of(row[x]);
        auto const mayStay = isAlone(row, x, width_);
        if (isClear(row[x])) {
            shown[x] = clear;
        } else if (mayStay && isLike(shown[x - 1], color)) {
            shown[x] = shown[x - 1];
        } else if (isFirst_ || !mayStay || !isLike(shown[x], color)) {
            shown[x] = search_.nearest(color);
        }
    }
}

bool GIFColors::isLike(std::uint8_t index, ColorLevels color) const {
    return index != clear && color.squaredDistance(ColorLevels::of(palette_.colors[index])) <= unseen;
}

ffmpeg::Frame GIFColors::indexed() const {
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
