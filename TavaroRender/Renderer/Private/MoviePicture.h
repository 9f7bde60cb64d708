#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroMedia/Frames/VideoFrame.h>
#include <TavaroPlatform/Queues/RowBands.h>
#include <TavaroRender/Kernels/ScreenTexture.h>

namespace tavaro {

/// The picture of a movie's frame as the compositor samples it. A frame is converted once.
class MoviePicture {
public:
    /// Whether the frame is another one than the one shown.
    bool differs(VideoFrame const& frame) const;

    /// Shows the frame, or nothing. `change` may repaint the picture before it is sampled.
    void show(VideoFrame const& frame, RowBands& rows, FunctionRef<void(MutableImageView)> change);

    bool isEmpty() const { return texture_.isEmpty(); }
    ScreenTexture const& texture() const { return texture_; }

private:
    FrameConverter converter_;
    Image pixels_;
    ScreenTexture texture_;
    std::optional<std::uint64_t> identity_; // none while it shows nothing
};

}
