#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <TavaroMedia/FFmpeg/Private/Handles.h>

namespace tavaro {

/// When frames of a movie are shown by its container: ticks of the stream's clock, rising.
struct FrameTimes {
    std::vector<std::int64_t> first; // some at the movie's beginning
    std::vector<std::int64_t> last;  // some up to its end; empty where `first` are all
    std::int64_t lastDuration = 0;   // of the last one, as far as the container tells

    std::optional<std::int64_t> end() const;
};

/// Seconds since a movie's first frame. Some containers count milliseconds and round every frame's time; where their
/// frames keep to one rate, this clock is that rate, and exact. A frame off the beat, and movies of a changing rate,
/// keep the times that their container tells.
class FrameClock {
public:
    FrameClock() = default;
    /// The container's own clock.
    FrameClock(AVRational timeBase, std::int64_t origin);

    /// Whether the container rounds so much that a frame may come out in its neighbour's time.
    bool isCoarse() const;

    /// Keeps to the rate of those frames where they have one: `told`, which the container claims, or a usual one.
    void keepTo(FrameTimes const& times, std::optional<AVRational> told);

    std::optional<double> rate() const { return rate_; } // frames a second
    double seconds(std::int64_t ticks) const;
    /// By so much a frame that is due may be late.
    double rounding() const;

private:
    struct Beat;
    Beat beat(std::int64_t ticks, double rate) const;
    bool areOnBeat(std::vector<std::int64_t> const& times, double rate) const;
    bool isSteady(FrameTimes const& times, double rate) const;

    double tick_ = 1; // seconds
    std::int64_t origin_ = 0;
    std::optional<double> rate_;
};

}
