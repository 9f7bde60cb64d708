#pragma once

#include <TavaroCapture/Camera/Private/CameraMode.h>
#include <TavaroCapture/V4L2/Private/VideoSystem.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavaro::v4l2 {

/// What a device says it is. None for what is no camera: a decoder, a tuner, a camera's node of something else.
struct CameraDescription {
    std::string name; // "HD Webcam C525"
    std::string bus;  // where it is plugged in
};
std::optional<CameraDescription> described(VideoDevice& device);

/// The forms in which it gives pictures, of those that can be read here. Each with the rate that is nearest to the
/// usual one.
std::vector<CameraMode> modesOf(VideoDevice& device);

/// How the device calls a layout.
std::uint32_t pixelFormat(DeviceLayout layout);
/// None for one that cannot be read here.
std::optional<DeviceLayout> layoutOf(std::uint32_t pixelFormat);

}
