#include <TavaroCapture/Events/Private/TakeClock.h>

#include <algorithm>
#include <limits>

namespace tavaro {

namespace {

constexpr double forever = std::numeric_limits<double>::infinity();

}

void TakeClock::start(double now) {
    std::lock_guard const lock(mutex_);
    start_ = now;
    pauses_.clear();
}

void TakeClock::setPaused(bool paused, double now) {
    std::lock_guard const lock(mutex_);
    bool const isPaused = !pauses_.empty() && pauses_.back().end == forever;
    if (!start_ || paused == isPaused) return;
    if (paused)
        pauses_.push_back({now, forever});
    else
        pauses_.back().end = std::max(now, pauses_.back().start);
}

bool TakeClock::isPaused() const {
    std::lock_guard const lock(mutex_);
    return !pauses_.empty() && pauses_.back().end == forever;
}

std::optional<double> TakeClock::time(double now) const {
    {
        std::lock_guard const lock(mutex_);
        for (Pause const& pause : pauses_) {
            if (now >= pause.start && now < pause.end) return std::nullopt;
        }
    }
    return elapsed(now);
}

std::optional<double> TakeClock::place(double capturedAt) const {
    constexpr double longestLead = 0.5; // a picture on show at the start, or a block of sound that began before it
    std::optional<double> start;
    {
        std::lock_guard const lock(mutex_);
        start = start_;
    }
    if (!start || capturedAt < *start - longestLead) return std::nullopt;
    return capturedAt < *start ? capturedAt - *start : time(capturedAt);
}

double TakeClock::elapsed(double now) const {
    std::lock_guard const lock(mutex_);
    return start_ ? std::max(now - *start_ - pausedBefore(now), 0.0) : 0.0;
}

double TakeClock::mediaTime(double time) const {
    std::lock_guard const lock(mutex_);
    double paused = 0;
    for (Pause const& pause : pauses_) {
        if (pause.end != forever) paused += pause.end - pause.start;
    }
    return start_.value_or(0) + paused + time;
}

double TakeClock::pausedBefore(double now) const {
    double result = 0;
    for (Pause const& pause : pauses_) result += std::max(std::min(now, pause.end) - pause.start, 0.0);
    return result;
}

}
