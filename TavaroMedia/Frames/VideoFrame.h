#pragma once

#include <cstdint>
#include <memory>
#include <utility>

namespace tavaro {

/// One decoded picture of a movie, in whatever form the decoder gave it. A copy shares the pixels, which never change.
/// `FrameConverter` makes an `Image` of it.
class VideoFrame {
public:
    VideoFrame() = default;

    bool isEmpty() const { return picture_ == nullptr; }

    /// Size as shown, in square pixels: after the movie's rotation and pixel aspect ratio.
    int width() const;
    int height() const;

    /// Seconds since the movie's first frame.
    double presentationTime() const;

    /// The same for the same frame of the same reader, however it was reached; different for any other frame.
    std::uint64_t identity() const;

    /// Whether both show the same pixels in the same colours, as a screen at rest does when it is recorded over and
    /// over. Reads both pictures up to the first difference: a third of a millisecond at most for 1080p.
    bool showsSamePixels(VideoFrame const& other) const;

    struct Picture; // the decoder's own form
    explicit VideoFrame(std::shared_ptr<Picture const> picture) : picture_(std::move(picture)) {}
    Picture const& picture() const { return *picture_; }

private:
    std::shared_ptr<Picture const> picture_;
};

}
