#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include <TavaroMedia/Frames/PictureSink.h>

namespace tavaro {

/// The colours that all pictures of a GIF share, as 0xAARRGGBB. The last one is for what shows through.
struct GIFPalette {
    std::array<std::uint32_t, 256> colors = {};
};

/// Looks at pictures, all of a film or some that stand for the rest, and finds the 255 colours that serve them best:
/// boxes of colours are split where they vary most (Wu, "Efficient statistical computations for optimal color
/// quantization"), then each colour moves to the middle of the pixels that take it (Lloyd). Keeps counts of colours, no
/// pictures; its memory is bounded.
class GIFPaletteMaker : public PictureSink {
public:
    GIFPaletteMaker(int width, int height);
    ~GIFPaletteMaker() override;

    EncoderPicture picture() override;
    void append(EncoderPicture picture, double presentationTime) override;

    /// Of at least one picture; call it once.
    GIFPalette palette();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
