#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>
#include <TavaroCapture/Sources/SourceList.h>

#include <memory>
#include <string>
#include <vector>

namespace tavaro::pipewire {

/// The cameras of a PipeWire server that the kernel has no device of: virtual ones, and those that programs drive. None
/// where no server answers.
std::vector<CameraInfo> cameras();

/// The camera of that id or name; an empty one is the first. It is open only while it is filmed. None where there is no
/// such camera; throws `CaptureError` (`noCamera`) where it cannot be used.
std::unique_ptr<CameraSource> openCamera(CameraDeviceSource const& source);

}
