#include <TavaroMedia/GIF/GIFPalette.h>

#include <cstring>

#include <TavaroMedia/FFmpeg/Private/Failures.h>
#include <TavaroMedia/Frames/Private/EncoderPlanes.h>
#include <TavaroMedia/GIF/Private/PictureFilter.h>

namespace tavaro {

struct GIFPaletteMaker::State {
    State(int width, int height)
        : pool(width, height, PictureFilter::format)
        , filter("palette", "palettegen", "stats_mode=full:reserve_transparent=1") {
        filter.addInput(width, height);
        filter.begin();
    }

    EncoderPicturePool pool;
    PictureFilter filter;
    std::int64_t pictures = 0;
};

GIFPaletteMaker::GIFPaletteMaker(int width, int height) : state_(std::make_unique<State>(width, height)) {}
GIFPaletteMaker::~GIFPaletteMaker() = default;

EncoderPicture GIFPaletteMaker::picture() { return state_->pool.take(); }

void GIFPaletteMaker::append(EncoderPicture picture, double) {
    auto& frame = *picture.planes().frame;
    frame.pts = state_->pictures++;
    state_->filter.put(0, frame);
}

GIFPalette GIFPaletteMaker::palette() {
    state_->filter.end(0);
    auto const frame = state_->filter.take();
    GIFPalette palette;
    constexpr int side = 16; // colours a row
    if (!frame || frame->width != side || frame->height != side) ffmpeg::throwWriting("palette", AVERROR(EINVAL));
    for (int y = 0; y < side; ++y)
        std::memcpy(&palette.colors[static_cast<std::size_t>(side * y)], frame->data[0] + y * frame->linesize[0],
                    side * sizeof(std::uint32_t));
    return palette;
}

}
