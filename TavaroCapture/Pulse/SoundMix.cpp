#include <TavaroCapture/Pulse/Private/SoundMix.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tavaro::pulse {

void SoundMix::begin(double moment) {
    start_ = moment;
    taken_ = 0;
    mixed_.clear();
}

void SoundMix::add(SoundBlock const& block) {
    auto const first = std::llround((block.capturedAt - start_) * audioRate) - taken_;
    auto const late = std::clamp<std::int64_t>(-first, 0, std::ssize(block.samples));
    auto const end = first + std::ssize(block.samples);
    if (end > std::ssize(mixed_)) mixed_.resize(static_cast<std::size_t>(end));
    for (std::int64_t i = late; i < std::ssize(block.samples); ++i) {
        auto& mixed = mixed_[static_cast<std::size_t>(first + i)];
        auto const& sample = block.samples[static_cast<std::size_t>(i)];
        mixed.left += sample.left;
        mixed.right += sample.right;
    }
}

void SoundMix::take(double until, std::function<void(SoundBlock const&)> const& block) {
    auto const count = static_cast<std::int64_t>(std::floor((until - start_) * audioRate)) - taken_;
    if (count <= 0) return;
    std::vector<StereoSample> samples(static_cast<std::size_t>(count));
    auto const known = static_cast<std::ptrdiff_t>(std::min<std::int64_t>(count, std::ssize(mixed_)));
    std::copy_n(mixed_.begin(), known, samples.begin());
    mixed_.erase(mixed_.begin(), mixed_.begin() + known);
    double const at = start_ + static_cast<double>(taken_) / audioRate;
    taken_ += count;
    block({samples, at});
}

}
