#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tavaro {

class VideoFrame;

/// The brightness of a picture, a byte a pixel, in the range that the movie has: black may be 0 or 16.
struct BrightnessView {
    std::uint8_t const* pixels = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t stride = 0; // bytes from a row to the next
};

/// Looks at frames in black and white. Of 8-bit Y′CbCr, upright, in square pixels, that is a plane of the decoder's
/// picture and costs nothing; of everything else it is converted. One stream of frames, one thread at a time.
class BrightnessReader {
public:
    BrightnessReader();
    BrightnessReader(BrightnessReader&&) noexcept;
    BrightnessReader& operator=(BrightnessReader&&) noexcept;
    ~BrightnessReader();

    /// Good for as long as the frame and until the next call. Throws `MediaError` (`unsupported`) for a pixel format
    /// that nothing here can read.
    BrightnessView view(VideoFrame const& frame);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
