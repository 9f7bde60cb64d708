#include <TavaroMedia/Frames/AlphaPicture.h>

#include <cstring>
#include <vector>

#include <TavaroMedia/Frames/Private/DecodedPicture.h>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace tavaro {

std::optional<Image> alphaPicture(VideoFrame const& video) {
    if (video.isEmpty() || !video.picture().turn.isNone()) return std::nullopt;
    auto const& frame = *video.picture().frame;
    auto const* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    bool const isReadable = format && (format->flags & AV_PIX_FMT_FLAG_ALPHA) &&
                            !(format->flags & (AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_FLOAT));
    if (!isReadable) return std::nullopt;

    int const alpha = format->nb_components - 1;
    auto const largest = (1u << format->comp[alpha].depth) - 1;
    Image image(frame.width, frame.height);
    std::vector<std::uint16_t> row(static_cast<std::size_t>(frame.width));
    std::uint8_t const* planes[4] = {frame.data[0], frame.data[1], frame.data[2], frame.data[3]};
    for (int y = 0; y < frame.height; ++y) {
        av_read_image_line2(row.data(), planes, frame.linesize, format, 0, y, alpha, frame.width, 0, sizeof row[0]);
        auto* pixel = image.row(y);
        for (auto const value : row) {
            auto const grey = static_cast<std::uint8_t>((value * 255u + largest / 2) / largest);
            std::uint8_t const rgba[4] = {grey, grey, grey, 255};
            std::memcpy(pixel, rgba, 4);
            pixel += 4;
        }
    }
    return image;
}

}
