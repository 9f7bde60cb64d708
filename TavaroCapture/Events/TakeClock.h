#pragma once

#include <mutex>
#include <optional>

namespace tavaro {

/// The timeline of one take: the media clock since the take's start, less all pauses. Every stream of the take is
/// stamped by it. Any thread.
class TakeClock {
public:
    void start(double now);
    void setPaused(bool paused, double now);
    bool isPaused() const;

    /// Seconds on the take's timeline at that moment of the media clock, never below 0; none while paused, for what
    /// happens in a pause is no part of the take. Before `start` it is 0.
    std::optional<double> time(double now) const;
    /// The same, standing still at the pause's start while paused.
    double elapsed(double now) const;
    /// The moment of the media clock that shows as `time` on the timeline from here on, if no more pauses come.
    double mediaTime(double time) const;

private:
    double elapsedLocked(double now) const;

    mutable std::mutex mutex_;
    std::optional<double> start_;
    std::optional<double> pauseStartedAt_;
    double pausedAccumulated_ = 0;
};

}
