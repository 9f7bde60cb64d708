#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tavaro::v4l2 {

/// A node of a video device.
struct VideoNode {
    std::filesystem::path path; // "/dev/video0": may be another's when it is plugged in again
    std::string id;             // the same whenever it is plugged in, where the system knows one, else "video0"
};

/// A video device that is open. What it returns and which `errno` it sets are the system calls'.
class VideoDevice {
public:
    virtual ~VideoDevice() = default;
    virtual int control(unsigned long request, void* argument) = 0; // `ioctl`
    /// Memory of the device, until the object ends. Empty where it cannot be had.
    virtual std::span<std::uint8_t const> map(std::size_t length, std::int64_t offset) = 0;
    virtual int poll(int milliseconds) = 0; // for pictures; above 0: look
};

/// The video devices of a machine, and the calls that work them. Any thread.
class VideoSystem {
public:
    virtual ~VideoSystem() = default;
    virtual std::vector<VideoNode> nodes() const = 0;
    /// None, with `errno` set, where it cannot be opened.
    virtual std::unique_ptr<VideoDevice> open(std::filesystem::path const& path) const = 0;
};

/// This machine's.
std::shared_ptr<VideoSystem const> kernelVideo();

}
