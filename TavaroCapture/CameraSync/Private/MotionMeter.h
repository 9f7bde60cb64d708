#pragma once

#include <TavaroCapture/CameraSync/Private/Claps.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>

#include <vector>

namespace tavaro {

/// How much each picture of a camera differs from the one before. One thread.
class MotionMeter {
public:
    void add(CapturedPicture const& picture);
    std::vector<Motion> const& motions() const { return motions_; }

private:
    DevicePixels pixels_;
    std::vector<float> last_; // brightness by places of a coarse grid
    std::vector<Motion> motions_;
};

}
