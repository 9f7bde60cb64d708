#include <TavaroMedia/Frames/BrightnessReader.h>

#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Frames/Private/DecodedPicture.h>

#include <vector>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace tavaro {

namespace {

bool hasBrightnessPlane(VideoFrame::Picture const& picture) {
    auto const& frame = *picture.frame;
    auto const* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    constexpr std::uint64_t otherForms = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_HWACCEL |
                                         AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_BAYER;
    if (!format || (format->flags & otherForms) != 0) return false;
    auto const& brightness = format->comp[0];
    bool const isSquare = picture.uprightWidth == frame.width && picture.uprightHeight == frame.height;
    return isSquare && picture.turn.isNone() && brightness.plane == 0 && brightness.step == 1 &&
           brightness.depth == 8 && brightness.shift == 0 && brightness.offset == 0;
}

/// BT.709, in 16 bits of fraction.
std::uint8_t brightnessOf(std::uint8_t const* rgba) {
    constexpr std::uint32_t red = 13933, green = 46871, blue = 4732;
    return static_cast<std::uint8_t>((red * rgba[0] + green * rgba[1] + blue * rgba[2] + 0x8000) >> 16);
}

}

struct BrightnessReader::State {
    FrameConverter converter;
    Image image;
    std::vector<std::uint8_t> pixels;

    BrightnessView converted(VideoFrame const& frame) {
        converter.convert(frame, image);
        auto const width = static_cast<std::size_t>(image.width());
        pixels.resize(width * static_cast<std::size_t>(image.height()));
        for (int y = 0; y < image.height(); ++y) {
            auto const* row = image.row(y);
            auto* to = pixels.data() + width * static_cast<std::size_t>(y);
            for (std::size_t x = 0; x < width; ++x) to[x] = brightnessOf(row + 4 * x);
        }
        return {pixels.data(), image.width(), image.height(), image.width()};
    }
};

BrightnessReader::BrightnessReader() : state_(std::make_unique<State>()) {}
BrightnessReader::BrightnessReader(BrightnessReader&&) noexcept = default;
BrightnessReader& BrightnessReader::operator=(BrightnessReader&&) noexcept = default;
BrightnessReader::~BrightnessReader() = default;

BrightnessView BrightnessReader::view(VideoFrame const& frame) {
    if (frame.isEmpty()) return {};
    if (!hasBrightnessPlane(frame.picture())) return state_->converted(frame);
    auto const& plane = *frame.picture().frame;
    return {plane.data[0], plane.width, plane.height, plane.linesize[0]};
}

}
