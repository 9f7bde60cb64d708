#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroMedia/Frames/EncoderPicture.h>
#include <TavaroMedia/Frames/Image.h>

#include <functional>
#include <memory>

namespace tavaro {

class CameraSource;

/// Looks through a camera that is not recorded. The camera is open for as long as the object lives, and many serve one
/// program at a time: it goes before a take of the same camera begins.
class CameraMonitor {
public:
    /// On a thread of the camera's own; the pixels are good during the call.
    using Picture = std::function<void(ImageView pixels, PixelOrder order)>;

    /// Returns when pictures come, or after two seconds without any. Throws `CaptureError`.
    CameraMonitor(CameraDeviceSource const& source, Picture picture);
    CameraMonitor(std::unique_ptr<CameraSource> source, Picture picture);
    /// No picture comes after it.
    ~CameraMonitor();
    CameraMonitor(CameraMonitor const&) = delete;
    CameraMonitor& operator=(CameraMonitor const&) = delete;

    /// Any thread. Whether it gives no pictures now; it may come back.
    bool isAway() const;

private:
    struct Eye;
    std::unique_ptr<Eye> eye_;
};

}
