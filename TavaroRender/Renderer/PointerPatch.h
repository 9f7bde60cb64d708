#pragma once

#include <vector>

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

struct FrameUniforms;

/// The canvas as it was beneath the pointer and the click effect. While nothing else changes, moving the pointer takes
/// putting this back and drawing the pointer anew, instead of the whole frame.
class PointerPatch {
public:
    /// Before the frame's pointer is drawn: keeps what it will cover. Keeps nothing where an effect may touch the whole
    /// canvas, as the spotlights do.
    void take(FrameUniforms const& frame, ImageView canvas);

    /// Puts the kept pixels back. False when there were none to put back, and the frame beneath must be drawn.
    bool restore(MutableImageView canvas) const;

    void forget() { isTaken_ = false; }

private:
    struct Span {
        int begin = 0;
        int end = 0;
    };
    Span columns_;
    Span rows_;
    std::vector<std::uint8_t> pixels_; // grows to the largest patch
    bool isTaken_ = false;
};

}
