#pragma once

#include <TavaroCapture/Camera/Private/CameraFeed.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <functional>
#include <memory>
#include <string>

namespace tavaro {

/// A camera that is open from `start` to `stop`, and is opened again whenever it is lost: unplugged, frozen, or giving
/// nothing but damaged pictures. Everything that may wait for the device happens on a thread of its own. A driver that
/// does not return from a call counts as frozen; `stop` leaves that thread, and the device with it, to the call.
class ReopenedCamera final : public CameraSource {
public:
    struct Options {
        /// Opens the one camera that is meant, never another one. Throws `CaptureError` while that cannot be.
        std::function<std::unique_ptr<CameraFeed>()> open;
        std::string id; // as listed
        Size2 size;     // of its pictures; a camera that comes back with another one counts as away
        int fps = 30;
        double lag = 0; // seconds by which its stamps are later than the exposure
    };

    /// Both sides even, as films want them.
    static Size2 filmedSize(DeviceFormat const& format);

    explicit ReopenedCamera(Options options);
    ~ReopenedCamera() override;

    Size2 size() const override { return options_.size; }
    std::string id() const override { return options_.id; }
    int fps() const override { return options_.fps; }
    void start(CameraHandlers handlers) override;
    void stop() override;

private:
    class Filming;

    Options const options_;
    std::shared_ptr<Filming> const filming_; // the thread's, too
    bool isStopped_ = false;
    SerialQueue watch_{"com.tavaro.capture.cameraWatch"};
    SerialQueue queue_{"com.tavaro.capture.cameraDevice", SerialQueue::Urgency::raised};
};

}
