#pragma once

#include <TavaroMedia/Audio/StereoSample.h>

#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

namespace tavaro {

/// How loud a sound is over the timeline of a take, as the log's `micLevels` have it: of each tenth of a second the
/// level of its loudest window. What nothing was added for is silent. Samples come from one thread, the rest is any's.
class LevelLog {
public:
    /// Samples whose first is at that time of the take; what lies before the take, or was added before, is left out.
    void add(double time, std::span<StereoSample const> samples);

    /// The entries after the first so many that can no longer change.
    std::vector<float> since(std::size_t held) const;
    std::size_t settled() const;
    /// All of them, the one that is not complete included.
    std::vector<float> all() const;
    float latest() const;

private:
    std::size_t settledHere() const;
    void closeWindow();

    std::vector<StereoSample> window_; // the adding thread's, as the next
    std::int64_t next_ = 0;            // sample of the take
    std::mutex mutable lock_;
    std::vector<float> entries_; // guarded by lock_
};

}
