#include <TavaroMedia/Audio/PeakLimiter.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tavaro {

namespace {

constexpr std::int64_t lookAhead = audioRate / 200; // 5 ms
constexpr double releaseSeconds = 0.08;

// Between two samples the signal is a sum of sixteen around them.
constexpr std::size_t taps = 16;
constexpr std::size_t before = taps / 2 - 1;
constexpr std::size_t after = taps / 2;
constexpr std::size_t phases = 3; // at a quarter, a half and three quarters

// Samples as quiet as this have no peak above the ceiling between them: the coefficients' magnitudes add up to less
// than 2.5.
constexpr float quiet = 0.4f;
constexpr std::size_t chunk = 64;

using Coefficients = std::array<std::array<float, taps>, phases>;

/// Windowed sinc, scaled so that a constant stays what it is.
Coefficients interpolation() {
    Coefficients coefficients;
    for (std::size_t phase = 0; phase < phases; ++phase) {
        double const shift = static_cast<double>(phase + 1) / (phases + 1);
        std::array<double, taps> values;
        double sum = 0;
        for (std::size_t i = 0; i < taps; ++i) {
            double const x = static_cast<double>(i) - before - shift;
            double const angle = std::numbers::pi * x;
            values[i] = std::sin(angle) / angle * std::pow(std::cos(angle / taps), 2);
            sum += values[i];
        }
        for (std::size_t i = 0; i < taps; ++i) coefficients[phase][i] = static_cast<float>(values[i] / sum);
    }
    return coefficients;
}

float magnitude(StereoSample const& sample) { return std::max(std::abs(sample.left), std::abs(sample.right)); }

}

PeakLimiter::PeakLimiter(double ceilingDecibels)
    : ceiling_(static_cast<float>(std::pow(10, ceilingDecibels / 20)))
    , window_(before)
    , gains_(lookAhead + 1, 1.0f)
    , gainSum_(lookAhead + 1) {}

void PeakLimiter::process(std::span<StereoSample const> samples, std::vector<StereoSample>& out) {
    window_.insert(window_.end(), samples.begin(), samples.end());
    measure(out);
}

void PeakLimiter::finish(std::vector<StereoSample>& out) {
    window_.resize(window_.size() + after);
    measure(out);
    for (std::int64_t i = 0; i < lookAhead; ++i) step(1);
    emit(held_.size(), out);
}

void PeakLimiter::measure(std::vector<StereoSample>& out) {
    auto const end = window_.size() < after ? std::size_t{0} : window_.size() - after;
    auto at = before;
    while (at < end) {
        auto const count = std::min(chunk, end - at);
        auto const around = std::span(window_).subspan(at - before, before + count + after);
        float loudest = 0;
        for (auto const& sample : around) loudest = std::max(loudest, magnitude(sample));
        bool const isQuiet = loudest <= ceiling_ * quiet;
        held_.insert(held_.end(), window_.begin() + static_cast<std::ptrdiff_t>(at),
                     window_.begin() + static_cast<std::ptrdiff_t>(at + count));
        if (isQuiet && isIdle()) {
            measured_ += static_cast<std::int64_t>(count);
        } else {
            for (std::size_t i = at; i < at + count; ++i) step(isQuiet ? 1 : neededGain(i));
        }
        at += count;
        auto const waiting = static_cast<std::size_t>(lookAhead);
        if (held_.size() > waiting) emit(held_.size() - waiting, out);
    }
    window_.erase(window_.begin(), window_.begin() + static_cast<std::ptrdiff_t>(at - before));
}

bool PeakLimiter::isIdle() const { return needs_.empty() && reduced_ == 0 && released_ == 1; }

float PeakLimiter::neededGain(std::size_t i) const {
    static Coefficients const coefficients = interpolation();
    auto const* around = window_.data() + i - before;
    auto peak = magnitude(window_[i]);
    for (auto const& phase : coefficients) {
        float left = 0;
        float right = 0;
        for (std::size_t tap = 0; tap < taps; ++tap) {
            left += phase[tap] * around[tap].left;
            right += phase[tap] * around[tap].right;
        }
        peak = std::max({peak, std::abs(left), std::abs(right)});
    }
    return peak > ceiling_ ? ceiling_ / peak : 1;
}

/// Takes what one more sample needs, and settles the gain of the sample 5 ms before it: the mean, over the 5 ms before
/// that, of the least gain that any sample of the 5 ms behind needs. So it is never more than the sample itself needs.
void PeakLimiter::step(float needed) {
    auto const at = measured_++;
    if (needed < 1) {
        while (!needs_.empty() && needs_.back().gain >= needed) needs_.pop_back();
        needs_.push_back({at, needed});
    }
    while (!needs_.empty() && needs_.front().at < at - lookAhead) needs_.pop_front();
    auto const least = needs_.empty() ? 1.0f : needs_.front().gain;
    static double const release = 1 - std::exp(-1 / (releaseSeconds * audioRate));
    released_ = least < released_ ? least : released_ + (least - released_) * release;
    if (released_ > 0.9999) released_ = 1;
    auto const gain = smoothed(static_cast<float>(released_));
    if (at >= lookAhead) ready_.push_back(gain);
}

float PeakLimiter::smoothed(float gain) {
    auto& slot = gains_[oldestGain_];
    oldestGain_ = (oldestGain_ + 1) % gains_.size();
    reduced_ += (gain < 1) - (slot < 1);
    gainSum_ += double{gain} - slot;
    slot = gain;
    if (reduced_ == 0) gainSum_ = static_cast<double>(gains_.size()); // without the rounding of many steps
    return reduced_ == 0 ? 1 : static_cast<float>(gainSum_ / static_cast<double>(gains_.size()));
}

/// Gives out the oldest samples: those whose gains are settled with them, and those before, which were quiet, as they
/// are.
void PeakLimiter::emit(std::size_t count, std::vector<StereoSample>& out) {
    auto const plain = count - std::min(count, ready_.size());
    for (std::size_t i = 0; i < count; ++i) {
        auto const gain = i < plain ? 1 : ready_[i - plain];
        out.push_back({held_[i].left * gain, held_[i].right * gain});
    }
    held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(count));
    ready_.clear();
}

}
