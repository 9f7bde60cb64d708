#include <TavaroCapture/Sound/Private/LevelLog.h>

#include <TavaroCore/Recording/EventLists.h>
#include <TavaroMedia/Audio/SoundLevels.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr auto window = static_cast<std::int64_t>(levelWindow);
constexpr auto entry = static_cast<std::int64_t>(micLevelSeconds * audioRate);

}

void LevelLog::add(double time, std::span<StereoSample const> samples) {
    auto const first = std::llround(time * audioRate);
    auto const known = std::clamp<std::int64_t>(next_ - first, 0, std::ssize(samples));
    samples = samples.subspan(static_cast<std::size_t>(known));
    if (samples.empty()) return;
    if (first + known > next_) {
        closeWindow();
        next_ = first + known;
    }
    for (auto const& sample : samples) {
        window_.push_back(sample);
        if (++next_ % window == 0) closeWindow();
    }
}

void LevelLog::closeWindow() {
    if (window_.empty()) return;
    auto const index = static_cast<std::size_t>((next_ - 1) / entry);
    std::lock_guard const guard(lock_);
    if (entries_.size() <= index) entries_.resize(index + 1);
    entries_[index] = std::max(entries_[index], soundLevel(window_));
    window_.clear();
}

std::size_t LevelLog::settledHere() const { return entries_.empty() ? 0 : entries_.size() - 1; }

std::size_t LevelLog::settled() const {
    std::lock_guard const guard(lock_);
    return settledHere();
}

std::vector<float> LevelLog::since(std::size_t held) const {
    std::lock_guard const guard(lock_);
    auto const count = settledHere();
    auto const from = std::min(held, count);
    return {entries_.begin() + static_cast<std::ptrdiff_t>(from),
            entries_.begin() + static_cast<std::ptrdiff_t>(count)};
}

std::vector<float> LevelLog::all() const {
    std::lock_guard const guard(lock_);
    return entries_;
}

float LevelLog::latest() const {
    std::lock_guard const guard(lock_);
    return entries_.empty() ? 0 : std::max(entries_.back(), entries_[entries_.size() > 1 ? entries_.size() - 2 : 0]);
}

}
