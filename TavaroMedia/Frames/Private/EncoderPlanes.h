#pragma once

#include <TavaroMedia/FFmpeg/Private/Handles.h>
#include <TavaroMedia/Frames/EncoderPicture.h>

namespace tavaro {

struct EncoderPicture::Planes {
    ffmpeg::Frame frame;
};

/// Pictures of one size and format, their memory taken again when the encoder and the caller are done with it.
class EncoderPicturePool {
public:
    EncoderPicturePool(int width, int height, AVPixelFormat format);

    EncoderPicture take();

private:
    int width_;
    int height_;
    AVPixelFormat format_;
    ffmpeg::BufferPool pool_;
};

}
