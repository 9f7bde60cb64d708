#pragma once

#include <array>

#include <TavaroMedia/FFmpeg/Private/Handles.h>
#include <TavaroMedia/Frames/VideoFrame.h>

namespace tavaro {

/// How a stored picture is turned and mirrored for showing: (x, y) → (xx·x + xy·y, yx·x + yy·y), moved back to the
/// origin.
struct PictureTurn {
    int xx = 1, xy = 0;
    int yx = 0, yy = 1;

    bool isNone() const { return xx == 1 && yy == 1; }
    bool swapsSides() const { return xx == 0; }
    bool operator==(PictureTurn const&) const = default;
};

struct VideoFrame::Picture {
    ffmpeg::Frame frame;
    int uprightWidth = 0; // in square pixels, before the turn
    int uprightHeight = 0;
    PictureTurn turn;
    double time = 0;
    std::uint64_t identity = 0;
    std::int64_t ticks = 0; // the movie's own clock
};

}
