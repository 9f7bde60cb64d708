#include "FakeOutput.h"

#include "../../Capture/TestDisplay.h"

#include <algorithm>
#include <thread>

namespace tavaro {

namespace {

constexpr std::int64_t ahead = audioRate / 5;
constexpr double step = 0.02;

}

double FakeDevice::time() const {
    std::lock_guard const lock(mutex_);
    return time_;
}

std::int64_t FakeDevice::heardNumber() const {
    auto const passed = static_cast<std::int64_t>((time_ - begun_) * audioRate);
    return std::clamp<std::int64_t>(passed, 0, std::ssize(written_));
}

bool FakeDevice::isFed() const {
    std::lock_guard const lock(mutex_);
    return isOpen_ && std::ssize(written_) - heardNumber() >= ahead;
}

/// Whether it plays, and would take more.
bool FakeDevice::isStarved() const {
    std::lock_guard const lock(mutex_);
    return isPlugged_ && isOpen_ && std::ssize(written_) - heardNumber() < ahead;
}

void FakeDevice::turn(double seconds) {
    for (double left = seconds; left > 1e-9; left -= step) {
        eventually([this] { return !isStarved(); });
        std::lock_guard const lock(mutex_);
        time_ += std::min(step, left);
    }
    eventually([this] { return !isStarved(); });
}

void FakeDevice::pass(double seconds) {
    std::lock_guard const lock(mutex_);
    time_ += seconds;
}

bool FakeDevice::isOpen() const {
    std::lock_guard const lock(mutex_);
    return isOpen_;
}

void FakeDevice::unplug() {
    std::lock_guard const lock(mutex_);
    isPlugged_ = false;
}

void FakeDevice::plug() {
    std::lock_guard const lock(mutex_);
    isPlugged_ = true;
    isOpen_ = false; // whoever wants it opens it anew
}

int FakeDevice::timesOpened() const {
    std::lock_guard const lock(mutex_);
    return timesOpened_;
}

float FakeDevice::heard() const {
    std::lock_guard const lock(mutex_);
    auto const number = heardNumber();
    bool const isHeard = isPlugged_ && isOpen_ && number > 0 && number < std::ssize(written_);
    return isHeard ? written_[static_cast<std::size_t>(number)].left : 0;
}

void FakeOutput::open() {
    std::lock_guard const lock(device_->mutex_);
    device_->isOpen_ = device_->isPlugged_;
    device_->timesOpened_ += device_->isOpen_;
    device_->written_.clear();
}

void FakeOutput::close() {
    std::lock_guard const lock(device_->mutex_);
    device_->isOpen_ = false;
}

SoundOutput::State FakeOutput::state() const {
    std::lock_guard const lock(device_->mutex_);
    return device_->isPlugged_ && device_->isOpen_ ? State::ready : State::gone;
}

void FakeOutput::run(std::chrono::milliseconds) { std::this_thread::sleep_for(std::chrono::microseconds(200)); }

std::size_t FakeOutput::room() const {
    std::lock_guard const lock(device_->mutex_);
    auto const queued = std::ssize(device_->written_) - device_->heardNumber();
    return static_cast<std::size_t>(std::max<std::int64_t>(ahead - queued, 0));
}

void FakeOutput::write(std::span<StereoSample const> samples) {
    std::lock_guard const lock(device_->mutex_);
    auto const written = static_cast<double>(device_->written_.size()) / audioRate;
    // What comes too late is heard from now on.
    if (device_->written_.empty() || device_->time_ - device_->begun_ > written)
        device_->begun_ = device_->time_ - written;
    device_->written_.insert(device_->written_.end(), samples.begin(), samples.end());
}

std::optional<double> FakeOutput::heard() const {
    std::lock_guard const lock(device_->mutex_);
    if (device_->written_.empty()) return std::nullopt;
    return static_cast<double>(device_->heardNumber());
}

}
