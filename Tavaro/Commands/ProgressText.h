#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavaro {

/// How fast work goes on. The latest seconds count most, so that the time left follows a change of pace without
/// jumping about with every frame.
class Pace {
public:
    /// `done` things at that many seconds from any start; both rise.
    void note(double seconds, std::int64_t done);

    /// Things a second; 0 while nothing can be said.
    double rate() const;

private:
    double seconds_ = 0;
    std::int64_t done_ = 0;
    bool hasBegun_ = false;
    double weightedDone_ = 0;
    double weightedSeconds_ = 0;
};

struct ProgressState {
    std::string_view title;
    std::int64_t done = 0;
    std::int64_t total = 0;
    double rate = 0; // frames a second; 0: unknown
};

/// One line about frames, for a log.
std::string progressText(ProgressState const& state);

/// The same with a bar, no wider than `columns`: what matters least is left out first.
std::string progressBar(ProgressState const& state, int columns);

}
