#pragma once

#include <TavaroMedia/Audio/StereoSample.h>

#include <cstdint>
#include <span>
#include <vector>

namespace tavaro {

/// The lowest and the highest of a stretch of samples, of both sides together; full scale is ±32767.
struct SoundPeak {
    std::int16_t low = 0;
    std::int16_t high = 0;

    bool operator==(SoundPeak const&) const = default;
};
static_assert(sizeof(SoundPeak) == 4);

/// How loud a sound is, at every scale: each peak of the lowest level is of 256 samples, each of the next of four below
/// it. An hour takes 3.6 MB. What is asked of it costs by the peaks asked for, whatever they span.
class PeakPyramid {
public:
    static constexpr int baseSamples = 256;
    static constexpr int fanIn = 4;

    PeakPyramid() = default;
    /// Of the lowest level; the others are made from it.
    explicit PeakPyramid(std::vector<SoundPeak> base);

    std::span<SoundPeak const> base() const;
    double seconds() const;

    /// The peaks of `count` stretches, one behind the other, of that many seconds each. Where stretches are shorter
    /// than 256 samples, neighbours share one; outside of the sound is silence.
    std::vector<SoundPeak> peaks(double start, double secondsEach, int count) const;

private:
    std::vector<std::vector<SoundPeak>> levels_;
};

/// Makes the lowest level from samples as they come.
class PeakMeter {
public:
    void feed(std::span<StereoSample const> samples);
    /// With what is left over; nothing more comes.
    std::vector<SoundPeak> take();

private:
    std::vector<SoundPeak> peaks_;
    float low_ = 0;
    float high_ = 0;
    int count_ = 0; // samples of the peak under way
};

}
