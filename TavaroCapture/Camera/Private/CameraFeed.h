#pragma once

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroMedia/Frames/DevicePictures.h>

#include <chrono>
#include <cstdint>
#include <span>

namespace tavaro {

/// What a camera handed over for a picture.
struct FedPicture {
    std::span<std::uint8_t const> bytes; // good during the call
    std::ptrdiff_t stride = 0;           // bytes a row of the first plane; 0: as the format says
    double capturedAt = 0;               // moment of its exposure on the media clock
    std::int64_t missedBefore = 0;       // pictures that the camera took since the one before, and nobody got
    bool isDamaged = false;              // as the camera itself says
};

/// A camera that is open, until it is lost. One thread.
class CameraFeed {
public:
    virtual ~CameraFeed() = default;
    virtual DeviceFormat const& format() const = 0;
    /// Pictures a second, as the camera promises.
    virtual double fps() const = 0;
    /// Waits `atMost` so long for pictures, and hands on those that have come. False once no more can come.
    virtual bool run(std::chrono::milliseconds atMost, FunctionRef<void(FedPicture const&)> take) = 0;
};

}
