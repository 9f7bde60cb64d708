#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>
#include <TavaroCapture/Sources/SourceList.h>
#include <TavaroCapture/V4L2/Private/VideoSystem.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavaro::v4l2 {

/// The cameras that can be opened now, in the system's order; the first is the default one.
std::vector<CameraInfo> cameras(VideoSystem const& system);

/// The camera of that id, name or node; an empty one is the default camera. It is open only while it is filmed. None
/// where there is no such camera; throws `CaptureError` (`noCamera`) where it cannot be used.
std::unique_ptr<CameraSource> openCamera(std::shared_ptr<VideoSystem const> const& system,
                                         CameraDeviceSource const& source);

}
