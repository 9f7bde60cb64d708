#pragma once

#include <atomic>
#include <string>
#include <thread>

namespace tavaro {

/// A camera of the session's PipeWire server: 640×480, 30 pictures a second, which show the moment at which they were
/// taken and are stamped with it.
class TestCameraNode {
public:
    explicit TestCameraNode(std::string name = "desk", std::string description = "Desk camera");
    ~TestCameraNode();

    std::atomic<bool> isFrozen = false;
    std::atomic<bool> saysNoStride = false;
    std::atomic<double> flashAt = 0; // moment of the media clock from which on it sees a light for a while
    std::atomic<int> sent = 0;       // pictures

private:
    void film();

    std::string const name_;
    std::string const description_;
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};

}
