#include <TavaroMedia/Frames/EncoderPicture.h>

#include <new>

#include <TavaroMedia/Frames/Private/EncoderPlanes.h>

extern "C" {
#include <libavutil/imgutils.h>
}

namespace tavaro {

namespace {

constexpr int rowAlignment = 64;

}

EncoderPicture::EncoderPicture(std::unique_ptr<Planes> planes) : planes_(std::move(planes)) {}
EncoderPicture::EncoderPicture(EncoderPicture&&) noexcept = default;
EncoderPicture& EncoderPicture::operator=(EncoderPicture&&) noexcept = default;
EncoderPicture::~EncoderPicture() = default;

int EncoderPicture::width() const { return planes_->frame->width; }
int EncoderPicture::height() const { return planes_->frame->height; }

EncoderPicture EncoderPicture::shared() const {
    auto planes = std::make_unique<Planes>();
    planes->frame.reset(av_frame_clone(planes_->frame.get()));
    if (!planes->frame) throw std::bad_alloc();
    return EncoderPicture(std::move(planes));
}

bool EncoderPicture::isShared() const { return av_buffer_is_writable(planes_->frame->buf[0]) == 0; }

EncoderPicturePool::EncoderPicturePool(int width, int height, AVPixelFormat format)
    : width_(width)
    , height_(height)
    , format_(format) {
    auto const bytes = av_image_get_buffer_size(format, width, height, rowAlignment);
    // Encoders may look a vector's width past the end of the last row.
    pool_.reset(av_buffer_pool_init(static_cast<std::size_t>(bytes) + 4 * rowAlignment, nullptr));
    if (!pool_) throw std::bad_alloc();
}

EncoderPicture EncoderPicturePool::take() {
    auto planes = std::make_unique<EncoderPicture::Planes>();
    planes->frame.reset(av_frame_alloc());
    if (!planes->frame) throw std::bad_alloc();
    auto& frame = *planes->frame;
    frame.buf[0] = av_buffer_pool_get(pool_.get());
    if (!frame.buf[0]) throw std::bad_alloc();
    auto const address = reinterpret_cast<std::uintptr_t>(frame.buf[0]->data);
    auto* start = frame.buf[0]->data + (rowAlignment - address % rowAlignment) % rowAlignment;
    av_image_fill_arrays(frame.data, frame.linesize, start, format_, width_, height_, rowAlignment);
    frame.width = width_;
    frame.height = height_;
    frame.format = format_;
    frame.color_range = AVCOL_RANGE_MPEG;
    frame.colorspace = AVCOL_SPC_BT709;
    frame.color_primaries = AVCOL_PRI_BT709;
    frame.color_trc = AVCOL_TRC_BT709;
    frame.chroma_location = AVCHROMA_LOC_LEFT;
    return EncoderPicture(std::move(planes));
}

}
