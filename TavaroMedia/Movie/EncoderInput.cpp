#include <TavaroMedia/Movie/Private/EncoderInput.h>

#include <cstring>
#include <new>

extern "C" {
#include <libavutil/hwcontext.h>
}

namespace tavaro {

namespace {

ffmpeg::Frame newFrame(AVFrame const& like) {
    ffmpeg::Frame frame(av_frame_alloc());
    if (!frame || av_frame_copy_props(frame.get(), &like) < 0) throw std::bad_alloc();
    frame->width = like.width;
    frame->height = like.height;
    return frame;
}

void interleaveRow(std::uint8_t const* cb, std::uint8_t const* cr, int count, std::uint8_t* to) {
    for (int x = 0; x < count; ++x) {
        to[2 * x] = cb[x];
        to[2 * x + 1] = cr[x];
    }
}

}

AVFrame* EncoderInput::converted(AVFrame* drawn, AVCodecContext const& encoder) {
    if (form_ == Form::asDrawn) return drawn;
    auto* picture = interleaved(*drawn);
    return form_ == Form::onDevice ? uploaded(*picture, encoder) : picture;
}

AVFrame* EncoderInput::interleaved(AVFrame const& drawn) {
    interleaved_ = newFrame(drawn);
    auto& frame = *interleaved_;
    frame.format = AV_PIX_FMT_NV12;
    // The encoder may hold on to the frames before, so each has memory of its own.
    if (av_frame_get_buffer(&frame, 0) < 0) throw std::bad_alloc();
    for (int y = 0; y < frame.height; ++y)
        std::memcpy(frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0],
                    drawn.data[0] + std::ptrdiff_t{y} * drawn.linesize[0], static_cast<std::size_t>(frame.width));
    for (int y = 0; y < frame.height / 2; ++y)
        interleaveRow(drawn.data[1] + std::ptrdiff_t{y} * drawn.linesize[1],
                      drawn.data[2] + std::ptrdiff_t{y} * drawn.linesize[2], frame.width / 2,
                      frame.data[1] + std::ptrdiff_t{y} * frame.linesize[1]);
    return &frame;
}

AVFrame* EncoderInput::uploaded(AVFrame const& picture, AVCodecContext const& encoder) {
    onDevice_ = newFrame(picture);
    if (av_hwframe_get_buffer(encoder.hw_frames_ctx, onDevice_.get(), 0) < 0) return nullptr;
    return av_hwframe_transfer_data(onDevice_.get(), &picture, 0) < 0 ? nullptr : onDevice_.get();
}

}
