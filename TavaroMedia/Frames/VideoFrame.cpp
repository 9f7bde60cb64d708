#include <TavaroMedia/Frames/VideoFrame.h>

#include <TavaroMedia/Frames/DecodedPicture.h>

namespace tavaro {

int VideoFrame::width() const {
    if (isEmpty()) return 0;
    return picture_->turn.swapsSides() ? picture_->uprightHeight : picture_->uprightWidth;
}

int VideoFrame::height() const {
    if (isEmpty()) return 0;
    return picture_->turn.swapsSides() ? picture_->uprightWidth : picture_->uprightHeight;
}

double VideoFrame::presentationTime() const { return isEmpty() ? 0 : picture_->time; }
std::uint64_t VideoFrame::identity() const { return isEmpty() ? 0 : picture_->identity; }

}
