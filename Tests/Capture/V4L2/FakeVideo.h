#pragma once

#include <TavaroCapture/Camera/Private/CameraMode.h>
#include <TavaroCapture/V4L2/Private/VideoSystem.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace tavaro::v4l2 {

inline std::vector<CameraMode> usualModes() { return std::vector(1, CameraMode{DeviceLayout::yuyv, 640, 480, 30}); }

/// A camera whose pictures show the moment at which they were taken. What happens to it may be changed at any time.
struct FakeCamera {
    std::string name = "Desk camera";
    std::string bus = "usb-1";
    std::string id = "usb-Desk-index0"; // empty: the system knows no lasting one
    std::string path = "/dev/video0";
    std::vector<CameraMode> modes = usualModes();
    std::uint32_t otherFormat = 0;  // one more that it has
    std::uint32_t capabilities = 0; // 0: a camera's

    std::atomic<bool> isPlugged = true;
    std::atomic<bool> isFrozen = false;
    std::atomic<bool> hangs = false;         // calls do not return
    std::atomic<bool> opensNever = false;    // nor does opening it
    std::atomic<bool> hangsInFormat = false; // nor does the call that sets one
    std::atomic<bool> isTaken = false;       // by another program
    std::atomic<bool> isBarred = false;      // to this user
    std::atomic<int> flawedEvery = 0;        // marked as damaged by the camera
    std::atomic<int> cutEvery = 0;           // half of the bytes are missing
    std::atomic<int> skippedEvery = 0;
    std::atomic<int> openings = 0; // so far
    std::atomic<int> streams = 0;  // at this moment
};

/// A machine with these cameras.
class FakeVideo final : public VideoSystem {
public:
    explicit FakeVideo(std::vector<std::shared_ptr<FakeCamera>> cameras) : cameras_(std::move(cameras)) {}
    std::vector<VideoNode> nodes() const override;
    std::unique_ptr<VideoDevice> open(std::filesystem::path const& path) const override;
    /// Plugs it in again, at that node.
    void plug(FakeCamera& camera, std::string path) const;

private:
    std::shared_ptr<FakeCamera> at(std::filesystem::path const& path) const;

    std::mutex mutable lock_; // of the paths
    std::vector<std::shared_ptr<FakeCamera>> const cameras_;
};

}
