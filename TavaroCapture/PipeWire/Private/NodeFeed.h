#pragma once

#include <TavaroCapture/Camera/Private/CameraFeed.h>
#include <TavaroCapture/Camera/Private/CameraMode.h>
#include <TavaroCapture/PipeWire/Private/VideoStream.h>

#include <memory>
#include <optional>

namespace tavaro::pipewire {

/// The pictures of a camera's node in one form, until the node is gone or changes it.
class NodeFeed final : public CameraFeed {
public:
    /// Agrees with the node on that form, and has it take pictures from then on. Throws `CaptureError` (`noCamera`)
    /// where that cannot be.
    NodeFeed(std::unique_ptr<Connection> connection, Node const& node, CameraMode const& mode);

    DeviceFormat const& format() const override { return format_; }
    double fps() const override { return fps_; }
    bool run(std::chrono::milliseconds atMost, FunctionRef<void(FedPicture const&)> take) override;

private:
    void noteFormat(VideoFormat const& format);
    void handOn(VideoPicture const& picture);
    std::int64_t missedBefore(std::uint64_t sequence);

    std::unique_ptr<Connection> const connection_;
    std::uint32_t const node_;
    DeviceFormat format_;
    double fps_ = 30;
    bool isAgreed_ = false;
    bool isChanged_ = false;
    std::optional<std::uint64_t> last_;                        // sequence of the last picture
    std::optional<FunctionRef<void(FedPicture const&)>> take_; // during a run
    VideoStream stream_;
};

}
