#pragma once

#include <TavaroMedia/Frames/EncoderPicture.h>

namespace tavaro {

/// Takes the pictures of a film one after the other: a movie, a GIF, or what only looks at them. Failures are
/// `MediaError`s.
class PictureSink {
public:
    virtual ~PictureSink() = default;

    /// A free picture to fill and append; its pixels are undefined. May be filled on another thread.
    virtual EncoderPicture picture() = 0;

    /// `presentationTime` is in seconds from the start, later than that of the picture before.
    virtual void append(EncoderPicture picture, double presentationTime) = 0;
};

}
