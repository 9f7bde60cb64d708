#include <Tavaro/Studio/Timeline/PeakPyramid.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

constexpr double baseSeconds = static_cast<double>(PeakPyramid::baseSamples) / audioRate;

SoundPeak joined(SoundPeak a, SoundPeak b) { return {std::min(a.low, b.low), std::max(a.high, b.high)}; }

SoundPeak joined(std::span<SoundPeak const> peaks) {
    auto all = peaks.front();
    for (auto const peak : peaks.subspan(1)) all = joined(all, peak);
    return all;
}

std::vector<SoundPeak> levelAbove(std::vector<SoundPeak> const& level) {
    std::vector<SoundPeak> above;
    above.reserve(level.size() / PeakPyramid::fanIn + 1);
    std::span<SoundPeak const> rest = level;
    while (!rest.empty()) {
        auto const taken = std::min<std::size_t>(rest.size(), PeakPyramid::fanIn);
        above.push_back(joined(rest.first(taken)));
        rest = rest.subspan(taken);
    }
    return above;
}

std::int16_t stored(float sample) {
    if (std::isnan(sample)) return 0;
    return static_cast<std::int16_t>(std::lround(std::clamp(sample, -1.0f, 1.0f) * 32767));
}

}

PeakPyramid::PeakPyramid(std::vector<SoundPeak> base) {
    if (base.empty()) return;
    levels_.push_back(std::move(base));
    while (levels_.back().size() > 1) levels_.push_back(levelAbove(levels_.back()));
}

std::span<SoundPeak const> PeakPyramid::base() const {
    return levels_.empty() ? std::span<SoundPeak const>() : levels_.front();
}

double PeakPyramid::seconds() const { return static_cast<double>(base().size()) * baseSeconds; }

std::vector<SoundPeak> PeakPyramid::peaks(double start, double secondsEach, int count) const {
    std::vector<SoundPeak> result(std::max(count, 0));
    if (levels_.empty() || !(secondsEach > 0) || !std::isfinite(start)) return result;
    double each = baseSeconds;
    std::size_t level = 0;
    while (level + 1 < levels_.size() && each * fanIn <= secondsEach) {
        each *= fanIn;
        ++level;
    }
    auto const& peaks = levels_[level];
    auto const size = static_cast<double>(peaks.size());
    for (int i = 0; i < count; ++i) {
        // A hair of tolerance: a border that only rounding moved takes no neighbour in.
        double const first = std::floor((start + secondsEach * i) / each + 1e-6);
        double const last = std::max(std::ceil((start + secondsEach * (i + 1)) / each - 1e-6), first + 1);
        if (last <= 0 || first >= size) continue;
        auto const from = static_cast<std::size_t>(std::max(first, 0.0)),
                   to = static_cast<std::size_t>(std::min(last, size));
        result[i] = joined(std::span(peaks).subspan(from, to - from));
    }
    return result;
}

void PeakMeter::feed(std::span<StereoSample const> samples) {
    for (auto const& sample : samples) {
        float const low = std::min(sample.left, sample.right), high = std::max(sample.left, sample.right);
        low_ = count_ ? std::min(low_, low) : low;
        high_ = count_ ? std::max(high_, high) : high;
        if (++count_ < PeakPyramid::baseSamples) continue;
        peaks_.push_back({stored(low_), stored(high_)});
        count_ = 0;
    }
}

std::vector<SoundPeak> PeakMeter::take() {
    if (std::exchange(count_, 0)) peaks_.push_back({stored(low_), stored(high_)});
    return std::move(peaks_);
}

}
