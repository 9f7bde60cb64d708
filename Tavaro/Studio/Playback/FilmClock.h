#pragma once

#include <Tavaro/Studio/Playback/Passage.h>

#include <functional>
#include <mutex>

namespace tavaro {

/// Where a film is that plays. Whoever leads says now and then what is heard; between that the clock goes on by itself,
/// and is drawn towards what was said instead of jumping there. Any thread.
class FilmClock {
public:
    using Time = std::function<double()>; // seconds of a steady clock
    explicit FilmClock(Time time);
    /// By the media clock.
    FilmClock();

    double now() const { return time_(); }
    /// Output seconds at a moment of the steady clock. Behind the end of the passage it goes on at its start, or
    /// stays at the end.
    double position(double moment) const;
    double position() const { return position(now()); }
    bool isRunning() const;
    /// Whether it is at the end of a passage that does not repeat.
    bool isAtEnd() const;

    /// Stays there.
    void hold(double at);
    /// Begins to run through the passage from its `from` on, now.
    void run(Passage const& passage);
    /// The passage's end has moved.
    void setEnd(double end);
    /// What is heard now, while it runs.
    void heard(double at);

private:
    double positionLocked(double moment) const;

    Time const time_;
    mutable std::mutex mutex_;
    Passage passage_; // from here on guarded by mutex_; `from` is where it was at `moment_`
    double moment_ = 0;
    bool isRunning_ = false;
};

}
