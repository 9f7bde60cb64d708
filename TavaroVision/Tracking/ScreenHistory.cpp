#include <TavaroVision/Tracking/Private/ScreenHistory.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

constexpr double longest = 1.2;                           // seconds
constexpr std::size_t mostBytes = std::size_t{120} << 20; // of pictures
constexpr std::size_t fewest = 3;                         // frames that are kept however large they are: of 8K

std::size_t bytesOf(PastFrame const& frame) {
    auto const view = frame.picture->view();
    return static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.height);
}

}

GrayPicture::GrayPicture(GrayView const& view) : width_(view.width), height_(view.height) {
    pixels_.reserve(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_));
    for (int y = 0; y < height_; ++y) {
        auto const* row = view.pixels + y * view.stride;
        pixels_.insert(pixels_.end(), row, row + width_);
    }
}

void ScreenHistory::add(PastFrame frame) {
    bool const isNew = frames_.empty() || frames_.back().picture != frame.picture;
    if (isNew) bytes_ += bytesOf(frame);
    frames_.push_back(std::move(frame));
    auto const isTooOld = [&] { return frames_.back().time - frames_.front().time > longest; };
    while (frames_.size() > fewest && (isTooOld() || bytes_ > mostBytes)) {
        if (frames_[1].picture != frames_[0].picture) bytes_ -= bytesOf(frames_[0]);
        frames_.pop_front();
    }
}

void ScreenHistory::clear() {
    frames_.clear();
    bytes_ = 0;
}

}
