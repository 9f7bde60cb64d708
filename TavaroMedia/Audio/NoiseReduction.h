#pragma once

#include <memory>
#include <span>
#include <vector>

#include <TavaroMedia/Audio/StereoSample.h>

namespace tavaro {

/// Takes steady noise (fans, hum, hiss) from behind speech. What comes out has neither delay nor another length.
class NoiseReduction {
public:
    /// `strength` is 0 (nothing is changed) … 1. With one channel only the left side is worked on, in half the time,
    /// and both come out the same.
    explicit NoiseReduction(double strength, int channels = 2);
    NoiseReduction(NoiseReduction&&) noexcept;
    NoiseReduction& operator=(NoiseReduction&&) noexcept;
    ~NoiseReduction();

    /// Appends to `out` what is ready; some of it comes with later samples.
    void process(std::span<StereoSample const> samples, std::vector<StereoSample>& out);
    /// The rest.
    void finish(std::vector<StereoSample>& out);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
