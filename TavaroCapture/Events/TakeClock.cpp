#include <TavaroCapture/Events/TakeClock.h>

#include <algorithm>

namespace tavaro {

void TakeClock::start(double now) {
    std::lock_guard const lock(mutex_);
    start_ = now;
    pauseStartedAt_.reset();
    pausedAccumulated_ = 0;
}

void TakeClock::setPaused(bool paused, double now) {
    std::lock_guard const lock(mutex_);
    if (!start_ || paused == pauseStartedAt_.has_value()) return;
    if (paused) {
        pauseStartedAt_ = now;
    } else {
        pausedAccumulated_ += std::max(now - *pauseStartedAt_, 0.0);
        pauseStartedAt_.reset();
    }
}

bool TakeClock::isPaused() const {
    std::lock_guard const lock(mutex_);
    return pauseStartedAt_.has_value();
}

std::optional<double> TakeClock::time(double now) const {
    std::lock_guard const lock(mutex_);
    if (pauseStartedAt_ && now >= *pauseStartedAt_) return std::nullopt;
    return elapsedLocked(now);
}

double TakeClock::elapsed(double now) const {
    std::lock_guard const lock(mutex_);
    return elapsedLocked(now);
}

double TakeClock::mediaTime(double time) const {
    std::lock_guard const lock(mutex_);
    return start_.value_or(0) + pausedAccumulated_ + time;
}

double TakeClock::elapsedLocked(double now) const {
    if (!start_) return 0;
    if (pauseStartedAt_) now = std::min(now, *pauseStartedAt_);
    return std::max(now - *start_ - pausedAccumulated_, 0.0);
}

}
