#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include <TavaroMedia/Audio/StereoSample.h>

namespace tavaro {

/// Plays a sound faster or slower at its own pitch. What sounds at sample n of the source begins at n ÷ speed, to the
/// sample where it begins suddenly, and else on average; no error adds up over any length.
///
/// Waveform similarity overlap-add (Verhelst, Roelands, ICASSP 1993): pieces of 20 ms are laid over each other every 10
/// ms, each from where the source, at most 6 ms around its place, goes on most like the piece before it. A place far
/// from its own costs likeness, so that pieces are as often early as late. Attacks are never repeated nor skipped: the
/// source is laid anew at each, and what is before it is made only of what was before it.
class TimeStretch {
public:
    static constexpr double slowest = 0.05;
    static constexpr double fastest = 50;

    /// Gives the source's samples from a position on; before the first and behind the last, silence. Positions ascend.
    using Source = std::function<void(std::int64_t position, std::span<StereoSample> samples)>;

    /// A speed from `slowest` to `fastest`.
    TimeStretch(double speed, Source source);
    TimeStretch(TimeStretch&&) noexcept;
    TimeStretch& operator=(TimeStretch&&) noexcept;
    ~TimeStretch();

    /// The next samples; the first ever is the source's sample 0.
    void read(std::span<StereoSample> samples);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
