#pragma once

#include <memory>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroMedia/Frames/Private/ColorKernels.h>
#include <TavaroMedia/Frames/Private/DecodedPicture.h>

namespace tavaro {

/// What a frame's colour tags say, with the usual guesses where they say nothing.
LumaWeights lumaWeights(AVFrame const& frame);
SampleRange sampleRange(AVFrame const& frame);

/// Whether the fused kernel takes the picture as it is.
bool isPlain420(VideoFrame::Picture const& picture);

/// The way for every other form: unpacked to planes, converted and scaled to square pixels by zimg, turned,
/// interleaved.
class GeneralConversion {
public:
    GeneralConversion();
    ~GeneralConversion();

    /// `to` has the size of the turned picture. Throws `MediaError` (`unsupported`).
    void convert(VideoFrame::Picture const& picture, MutableImageView to);

private:
    struct Graph;
    std::unique_ptr<Graph> graph_; // for pictures like the last one
};

}
