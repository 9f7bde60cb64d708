#pragma once

#include <memory>

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

class VideoFrame;
struct ShownSource;

/// Tells the person from the room in the camera's picture. One thread at a time.
class CameraMatte {
public:
    virtual ~CameraMatte() = default;

    /// Red is how much of a pixel is the person; stretched over the camera's picture whatever its own size. While the
    /// picture stays the same, the same image. Null where nothing tells. Throws `PaintError`.
    virtual std::shared_ptr<Image const> matte(ShownSource const& camera, VideoFrame const& picture) = 0;

    /// What could not be found may be there from now on.
    virtual void retry() {}
};

}
