#include <TavaroMedia/Frames/VideoFrame.h>

#include <cstring>

#include <TavaroMedia/Frames/Private/DecodedPicture.h>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace tavaro {

namespace {

bool hasSameForm(AVFrame const& a, AVFrame const& b) {
    return a.format == b.format && a.width == b.width && a.height == b.height && a.color_range == b.color_range &&
           a.colorspace == b.colorspace && a.color_primaries == b.color_primaries && a.color_trc == b.color_trc &&
           a.chroma_location == b.chroma_location;
}

bool hasSameBytes(AVFrame const& a, AVFrame const& b) {
    auto const format = static_cast<AVPixelFormat>(a.format);
    auto const* description = av_pix_fmt_desc_get(format);
    if (!description || (description->flags & AV_PIX_FMT_FLAG_HWACCEL)) return false;
    for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
        auto const bytes = av_image_get_linesize(format, a.width, plane);
        bool const isChroma = plane == 1 || plane == 2;
        int const rows = isChroma ? AV_CEIL_RSHIFT(a.height, description->log2_chroma_h) : a.height;
        if (bytes <= 0 || !a.data[plane] || !b.data[plane]) return false;
        for (std::ptrdiff_t y = 0; y < rows; ++y) {
            auto const* rowA = a.data[plane] + y * a.linesize[plane];
            auto const* rowB = b.data[plane] + y * b.linesize[plane];
            if (std::memcmp(rowA, rowB, static_cast<std::size_t>(bytes)) != 0) return false;
        }
    }
    return (description->flags & AV_PIX_FMT_FLAG_PAL) == 0; // a palette may differ where the indices do not
}

}

int VideoFrame::width() const {
    if (isEmpty()) return 0;
    return picture_->turn.swapsSides() ? picture_->uprightHeight : picture_->uprightWidth;
}

int VideoFrame::height() const {
    if (isEmpty()) return 0;
    return picture_->turn.swapsSides() ? picture_->uprightWidth : picture_->uprightHeight;
}

double VideoFrame::presentationTime() const { return isEmpty() ? 0 : picture_->time; }
std::uint64_t VideoFrame::identity() const { return isEmpty() ? 0 : picture_->identity; }

bool VideoFrame::showsSamePixels(VideoFrame const& other) const {
    if (picture_ == other.picture_) return true;
    if (isEmpty() || other.isEmpty()) return false;
    auto const& a = *picture_;
    auto const& b = *other.picture_;
    return a.uprightWidth == b.uprightWidth && a.uprightHeight == b.uprightHeight && a.turn == b.turn &&
           hasSameForm(*a.frame, *b.frame) && hasSameBytes(*a.frame, *b.frame);
}

}
