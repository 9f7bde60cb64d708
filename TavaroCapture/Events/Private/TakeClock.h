#pragma once

#include <mutex>
#include <optional>
#include <vector>

namespace tavaro {

/// The timeline of one take: the media clock since the take's start, less all pauses. Every stream of the take is
/// stamped by it. Any thread.
class TakeClock {
public:
    void start(double now);
    void setPaused(bool paused, double now);
    bool isPaused() const;

    /// Seconds on the take's timeline at that moment of the media clock, never below 0; none for a moment in a pause,
    /// past or present, for what happens in a pause is no part of the take. Before `start` it is 0.
    std::optional<double> time(double now) const;
    /// The same, but below 0 for what was captured a moment before the take's start; none before `start`, and for what
    /// is older than that moment.
    std::optional<double> place(double capturedAt) const;
    /// As `time`, standing still at the pause's start while paused.
    double elapsed(double now) const;
    /// The moment of the media clock that shows as `time` on the timeline from here on, if no more pauses come.
    double mediaTime(double time) const;

private:
    struct Pause {
        double start;
        double end; // infinite while it lasts
    };
    /// Seconds of pauses before that moment; infinite time ahead of it does not count.
    double pausedBefore(double now) const;

    mutable std::mutex mutex_;
    std::optional<double> start_;
    std::vector<Pause> pauses_;
};

}
