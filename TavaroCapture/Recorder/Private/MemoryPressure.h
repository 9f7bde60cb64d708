#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>

namespace tavaro {

/// Counts how often the machine ran short of memory, by how long its programs wait for it. `look` belongs to one
/// thread.
class MemoryPressure {
public:
    explicit MemoryPressure(std::filesystem::path file = "/proc/pressure/memory") : file_(std::move(file)) {}

    /// Once a second or so. Systems that do not tell count nothing.
    void look();
    /// Any thread.
    std::int64_t events() const { return events_; }

private:
    std::filesystem::path const file_;
    bool isShort_ = false;
    std::atomic<std::int64_t> events_ = 0;
};

}
