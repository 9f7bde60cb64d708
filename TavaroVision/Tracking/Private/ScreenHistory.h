#pragma once

#include <TavaroVision/Reading/ReadText.h>
#include <TavaroVision/Tracking/Private/ShiftSearch.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace tavaro {

/// A picture of the screen in black and white that several keep.
class GrayPicture {
public:
    explicit GrayPicture(GrayView const& view);
    GrayView view() const { return {pixels_.data(), width_, height_, width_}; }

private:
    std::vector<std::uint8_t> pixels_;
    int width_;
    int height_;
};

/// A frame of the recording.
struct PastFrame {
    double time = 0; // seconds, of its beginning
    std::shared_ptr<GrayPicture const> picture;
    std::vector<Shift> shifts; // of what moved since the frame before
};

/// The frames of the last second or so, to look for where text came from.
class ScreenHistory {
public:
    /// Frames that look the same share one picture, and count once.
    void add(PastFrame frame);
    void clear();

    bool isEmpty() const { return frames_.empty(); }
    std::size_t size() const { return frames_.size(); }
    PastFrame const& operator[](std::size_t index) const { return frames_[index]; } // the oldest is the first
    PastFrame const& last() const { return frames_.back(); }

private:
    std::deque<PastFrame> frames_;
    std::size_t bytes_ = 0;
};

}
