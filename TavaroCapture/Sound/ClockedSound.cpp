#include <TavaroCapture/Sound/Private/ClockedSound.h>

#include <TavaroCapture/Sound/Private/FractionalSample.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr std::size_t chunk = audioRate / 100; // as long as one step is kept
constexpr double jumpSamples = 0.020 * audioRate;
constexpr double fastestCorrection = 0.002; // a shift of pitch that nobody hears
constexpr double largeError = 0.002 * audioRate;
// Seconds in which an error is made up for: the clock's readings waver, and a tone that follows them closely wavers
// too.
constexpr double patience = 6;
constexpr double patienceWithLarge = 1;
constexpr double smoothing = 1; // seconds in which the pitch follows

}

void ClockedSound::append(std::span<StereoSample const> samples) {
    held_.insert(held_.end(), samples.begin(), samples.end());
    produce();
}

void ClockedSound::appendHole(std::size_t count) {
    held_.insert(held_.end(), count, {});
    produce();
}

/// The first sample that has all its neighbours takes its place on the clock.
bool ClockedSound::begin() {
    if (next_) return true;
    constexpr auto longestWait = std::size_t{audioRate} / 2; // a device of which nothing is known is not heard
    if (!clock_.isSure()) {
        if (held_.size() > longestWait) {
            auto const surplus = static_cast<std::ptrdiff_t>(held_.size() - longestWait);
            held_.erase(held_.begin(), held_.begin() + surplus);
            first_ += surplus;
        }
        return false;
    }
    position_ = static_cast<double>(first_ + fractionalReach);
    next_ = clock_.momentOf(position_);
    return true;
}

/// The device's samples and the clock lie so far apart that following gently would take too long.
void ClockedSound::jump(double error) {
    if (error > 0)
        position_ += error;
    else
        *next_ -= error / audioRate;
}

/// Of the device's samples to the next one to be made.
void ClockedSound::adjustStride() {
    double const error = clock_.sampleAt(*next_) - position_;
    double const within = std::abs(error) > largeError ? patienceWithLarge : patience;
    double const wanted = clock_.rate() + std::clamp(error / within / audioRate, -fastestCorrection, fastestCorrection);
    double const share = static_cast<double>(chunk) / (smoothing * audioRate);
    stride_ += share * (wanted - stride_);
}

/// How many samples can be made at most before the device's run out.
std::size_t ClockedSound::ready() const {
    double const last = static_cast<double>(samplesAdded() - fractionalReach - 1);
    return position_ < last ? static_cast<std::size_t>((last - position_) / (1 + 2 * fastestCorrection)) : 0;
}

void ClockedSound::produce() {
    if (!begin()) return;
    std::vector<StereoSample> made;
    double start = *next_;
    auto const handOn = [&] {
        if (!made.empty()) block_({made, start});
        made.clear();
    };
    while (true) {
        double const error = clock_.sampleAt(*next_) - position_;
        if (std::abs(error) > jumpSamples) {
            handOn();
            jump(error);
            start = *next_;
        }
        auto const count = std::min(ready(), chunk);
        if (count == 0) break;
        adjustStride();
        double const begun = *next_;
        for (std::size_t i = 0; i < count; ++i) {
            made.push_back(fractionalSample(held_, position_ - static_cast<double>(first_)));
            position_ += stride_;
        }
        next_ = begun + static_cast<double>(count) / audioRate;
    }
    handOn();
    auto const done =
        std::clamp<std::int64_t>(static_cast<std::int64_t>(position_) - fractionalReach - first_, 0, std::ssize(held_));
    held_.erase(held_.begin(), held_.begin() + done);
    first_ += done;
}

}
