#pragma once

#include <TavaroMedia/FFmpeg/Private/Handles.h>

namespace tavaro {

/// Brings drawn pictures into the form that an encoder takes.
class EncoderInput {
public:
    enum class Form {
        asDrawn,
        interleavedChroma, // planes of 4:2:0 become NV12
        onDevice,          // NV12 in the device's own memory
    };

    explicit EncoderInput(Form form = Form::asDrawn) : form_(form) {}

    /// The same frame, or one that belongs to this object until the next call; null where the device takes no more.
    AVFrame* converted(AVFrame* drawn, AVCodecContext const& encoder);

private:
    AVFrame* interleaved(AVFrame const& drawn);
    AVFrame* uploaded(AVFrame const& picture, AVCodecContext const& encoder);

    Form form_;
    ffmpeg::Frame interleaved_;
    ffmpeg::Frame onDevice_;
};

}
