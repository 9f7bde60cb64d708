#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

/// One frame of the recording as the kernels sample it: the picture itself (level 0) and smaller copies of it, each
/// half the size of the one before (a box of 2 × 2; where a side is odd, 3 texels weighted by their share). Levels are
/// made when first asked for and kept until the frame changes, so a frame drawn several times pays once.
class ScreenTexture {
public:
    ScreenTexture() = default;

    /// `frame` must stay good, and its pixels unchanged, until the next `setFrame`.
    explicit ScreenTexture(ImageView frame) : frame_(frame) {}

    /// Shows another frame, and keeps the memory of the levels where the size is the same.
    void setFrame(ImageView frame);

    ImageView frame() const { return frame_; }
    int width() const { return frame_.width; }
    int height() const { return frame_.height; }
    bool isEmpty() const { return frame_.isEmpty(); }

    /// Levels there can be, the last being 1 × 1; 0 for an empty frame.
    int levelCount() const;

    /// Level `index`, capped to the last one. Any thread.
    ImageView ensureLevel(int index) const;

private:
    ImageView frame_;
    mutable std::mutex mutex_;
    mutable std::vector<Image> levels_; // level 1 onwards
    mutable int built_ = 0;             // how many of `levels_` show `frame_`
};

}
