#include <TavaroRender/Renderer/Private/MoviePicture.h>

namespace tavaro {

namespace {

std::optional<std::uint64_t> identityOf(VideoFrame const& frame) {
    return frame.isEmpty() ? std::nullopt : std::optional{frame.identity()};
}

}

bool MoviePicture::differs(VideoFrame const& frame) const { return identityOf(frame) != identity_; }

void MoviePicture::show(VideoFrame const& frame, RowBands& rows, FunctionRef<void(MutableImageView)> change) {
    identity_.reset(); // also where converting throws half way
    if (frame.isEmpty()) return texture_.setFrame({});
    converter_.convert(frame, pixels_, rows);
    change(pixels_.view());
    texture_.setFrame(std::as_const(pixels_).view());
    identity_ = identityOf(frame);
}

}
