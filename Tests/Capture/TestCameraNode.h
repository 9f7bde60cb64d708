#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace tavaro {

/// A grey picture of two bytes a pixel (YUY2) that shows a moment of the media clock.
void paintTimecode(std::span<std::uint8_t> pixels, int width, std::int64_t microseconds, std::uint8_t grey);

/// A camera of the session's PipeWire server: 30 pictures a second, which show the moment at which they were taken and
/// are stamped with it.
class TestCameraNode {
public:
    struct Options {
        std::string name = "desk";
        std::string description = "Desk camera";
        int width = 640;
        int height = 480;
    };
    explicit TestCameraNode(Options options);
    TestCameraNode() : TestCameraNode(Options{}) {}
    ~TestCameraNode();

    std::atomic<bool> isFrozen = false;
    std::atomic<bool> saysNoStride = false;
    std::atomic<double> flashAt = 0; // moment of the media clock from which on it sees a light for a while
    std::atomic<int> sent = 0;       // pictures
    /// Of those, the moments.
    std::vector<double> moments() const;
    void note(double moment);

private:
    void film();

    Options const options_;
    std::mutex mutable lock_;
    std::vector<double> moments_; // guarded by lock_
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};

}
