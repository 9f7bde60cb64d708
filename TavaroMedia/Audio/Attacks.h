#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include <TavaroMedia/Audio/StereoSample.h>

namespace tavaro {

/// Finds where sounds begin suddenly in a stream: beats, clicks, the first sound of a word. There, ten times the power
/// of any millisecond of the twenty before sets in.
class Attacks {
public:
    /// The stream's first sample is that of `position`.
    explicit Attacks(std::int64_t position) : position_(position) {}

    void feed(std::span<StereoSample const> samples);

    /// The first one at or after `position`, among what was fed; earlier ones are forgotten.
    std::int64_t next(std::int64_t position);
    static constexpr std::int64_t none = INT64_MAX;

    /// So many samples of what is fed last may still hold one that is not known.
    static constexpr std::int64_t lookAhead = 4 * audioRate / 1000;

private:
    void judge(std::size_t block);

    std::int64_t position_; // of the first of `samples_`
    std::vector<StereoSample> samples_;
    std::deque<float> powers_; // of the last milliseconds judged
    std::deque<std::int64_t> found_;
    std::int64_t last_ = INT64_MIN / 2;
};

}
