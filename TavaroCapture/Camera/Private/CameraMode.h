#pragma once

#include <TavaroMedia/Frames/DevicePictures.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace tavaro {

/// One of the forms in which a camera gives its pictures.
struct CameraMode {
    DeviceLayout layout = DeviceLayout::yuyv;
    int width = 0;
    int height = 0;
    double fps = 0; // the nearest to the wanted rate that it has in this form; 0: it does not say
    bool operator==(CameraMode const&) const = default;
};

/// What is filmed where the camera can: more than that is never shown large enough to be seen, and costs two cores.
inline constexpr CameraMode usualCameraMode{DeviceLayout::yuyv, 1280, 720, 30};

/// A mode whose pictures come fast enough to look like moving, before anything else; then the nearest in size to
/// `wanted`, rather smaller than larger; then one that needs no decoding; then the nearest rate. None for no mode.
std::optional<CameraMode> chosenMode(std::vector<CameraMode> const& modes, CameraMode const& wanted = usualCameraMode);

/// Sides of pictures that many cameras have, as candidates where a camera takes any within limits.
struct CameraSize {
    int width = 0;
    int height = 0;
};
std::vector<CameraSize> const& usualCameraSizes();

}
