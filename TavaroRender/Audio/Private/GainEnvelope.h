#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <TavaroMedia/Audio/StereoSample.h>

namespace tavaro {

/// A gain that is reached at an output sample.
struct GainPoint {
    std::int64_t at = 0;
    float gain = 1;

    bool operator==(GainPoint const&) const = default;
};

/// Output samples [start, end).
struct SampleSpan {
    std::int64_t start = 0;
    std::int64_t end = 0;

    bool operator==(SampleSpan const&) const = default;
};

/// Brings ranges into order and joins those that are less than `gap` apart.
std::vector<SampleSpan> joined(std::vector<SampleSpan> ranges, std::int64_t gap);

/// How loud something is over time: from point to point in half a turn of a cosine, so that no corner is heard; level
/// before the first point and after the last. Without points, 1.
class GainEnvelope {
public:
    GainEnvelope() = default;
    /// Points in ascending order.
    explicit GainEnvelope(std::vector<GainPoint> points) : points_(std::move(points)) {}

    /// 1, but `gain` inside the ranges. It falls over the `attack` samples before a range and rises over the `release`
    /// samples after it; negative ones lie inside the range. Ranges in order, apart from each other by both ramps.
    static GainEnvelope dips(std::vector<SampleSpan> const& ranges, float gain, std::int64_t attack,
                             std::int64_t release);

    float at(std::int64_t sample) const;
    /// Multiplies samples, the first of which is that of the output.
    void apply(std::int64_t first, std::span<StereoSample> samples) const;

    std::vector<GainPoint> const& points() const { return points_; }

    bool operator==(GainEnvelope const&) const = default;

private:
    std::vector<GainPoint> points_;
};

}
