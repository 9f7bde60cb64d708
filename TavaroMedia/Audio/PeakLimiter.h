#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include <TavaroMedia/Audio/StereoSample.h>

namespace tavaro {

/// Keeps the true peak (between the samples too, after ITU-R BS.1770 by fourfold interpolation) below a ceiling. It
/// looks 5 ms ahead, so that the gain bends before a peak and nothing is clipped; sound below the ceiling passes
/// unchanged, to the bit. What comes out has neither delay nor another length.
class PeakLimiter {
public:
    explicit PeakLimiter(double ceilingDecibels);

    /// Appends to `out` what is ready; some of it comes with later samples.
    void process(std::span<StereoSample const> samples, std::vector<StereoSample>& out);
    /// The rest.
    void finish(std::vector<StereoSample>& out);

private:
    struct Need {
        std::int64_t at = 0;
        float gain = 1;
    };

    void measure(std::vector<StereoSample>& out);
    bool isIdle() const;
    float neededGain(std::size_t i) const;
    void step(float needed);
    float smoothed(float gain);
    void emit(std::size_t count, std::vector<StereoSample>& out);

    float ceiling_;
    std::vector<StereoSample>
        window_;                     // samples that are still to be measured, with what the interpolation needs around
    std::vector<StereoSample> held_; // measured ones that wait for what comes after them
    std::deque<Need> needs_;         // of the next 5 ms, each larger than the ones before it; only those below 1
    std::vector<float> gains_;       // the last 5 ms, whose mean bends softly
    std::size_t oldestGain_ = 0;
    int reduced_ = 0; // how many of them are below 1
    double gainSum_ = 0;
    double released_ = 1; // falls at once, rises slowly
    std::vector<float> ready_;
    std::int64_t measured_ = 0;
};

}
