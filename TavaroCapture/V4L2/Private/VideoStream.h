#pragma once

#include <TavaroCapture/Camera/Private/CameraFeed.h>
#include <TavaroCapture/Camera/Private/CameraMode.h>
#include <TavaroCapture/V4L2/Private/VideoSystem.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavaro::v4l2 {

/// A V4L2 camera that is open in one mode. Its pictures are stamped by the kernel.
class VideoStream final : public CameraFeed {
public:
    /// Sets the mode and takes the device for itself; pictures are not taken before the first `run`. `name` is for
    /// sentences. Throws `CaptureError` (`noCamera`), as where another program films with it.
    VideoStream(std::unique_ptr<VideoDevice> device, CameraMode const& mode, std::string name);
    ~VideoStream() override;

    DeviceFormat const& format() const override { return format_; }
    double fps() const override { return fps_; }
    bool run(std::chrono::milliseconds atMost, FunctionRef<void(FedPicture const&)> take) override;

private:
    struct Buffer {
        std::span<std::uint8_t const> memory;
    };
    enum class Fetched { picture, none, gone };

    [[noreturn]] void fail(int errorNumber) const;
    void setFormat(CameraMode const& mode);
    bool tryFormat(CameraMode const& mode, std::uint32_t pixelFormat);
    void setRate(double fps);
    void lendBuffers();
    bool queue(std::uint32_t index);
    bool begin();
    Fetched fetch(FunctionRef<void(FedPicture const&)> take);
    std::int64_t missedBefore(std::uint32_t sequence);

    std::unique_ptr<VideoDevice> const device_;
    std::string const name_;
    DeviceFormat format_;
    double fps_ = 30;
    std::vector<Buffer> buffers_;
    bool isStreaming_ = false;
    std::optional<std::uint32_t> last_; // sequence of the last picture
};

}
