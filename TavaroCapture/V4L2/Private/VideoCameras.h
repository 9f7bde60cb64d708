#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>
#include <TavaroCapture/Sources/SourceList.h>
#include <TavaroCapture/V4L2/Private/VideoSystem.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace tavaro::v4l2 {

/// How long all drivers together may take to answer.
inline constexpr std::chrono::milliseconds driverPatience = std::chrono::seconds(5);

struct VideoCameraList {
    std::vector<CameraInfo> cameras; // in the system's order; the first is the default one
    std::vector<std::string> silent; // nodes whose drivers do not answer
};
/// The cameras that can be opened now.
VideoCameraList cameras(std::shared_ptr<VideoSystem const> const& system,
                        std::chrono::milliseconds patience = driverPatience);

/// The camera of that id, name or node; an empty one is the default camera. It is open only while it is filmed. None
/// where there is no such camera; throws `CaptureError` (`noCamera`) where it cannot be used, or does not answer.
std::unique_ptr<CameraSource> openCamera(std::shared_ptr<VideoSystem const> const& system,
                                         CameraDeviceSource const& source,
                                         std::chrono::milliseconds patience = driverPatience);

}
