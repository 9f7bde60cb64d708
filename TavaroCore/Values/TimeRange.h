#pragma once

#include <TavaroCore/Records/Fields.h>

#include <algorithm>

namespace tavaro {

/// A half-open span of time in seconds: `start` belongs to it, `end()` does not.
struct TimeRange {
    double start = 0;
    double duration = 0;

    static const TimeRange zero;

    double end() const { return start + duration; }
    bool contains(double t) const { return start <= t && t < end(); }
    /// Ranges that only touch do not intersect.
    bool intersects(TimeRange const& other) const { return start < other.end() && other.start < end(); }
    /// How far t lies through the range, 0…1. A range without length is passed at its start.
    double progress(double t) const {
        if (duration > 0) return std::clamp((t - start) / duration, 0.0, 1.0);
        return t >= start ? 1 : 0;
    }
    /// The smallest range that holds both.
    TimeRange unionWith(TimeRange const& other) const {
        double const first = std::min(start, other.start);
        return {first, std::max(std::max(end(), other.end()) - first, 0.0)};
    }

    static constexpr auto fields =
        std::tuple{field("start", &TimeRange::start), field("duration", &TimeRange::duration)};
    bool operator==(TimeRange const&) const = default;
};
static_assert(listsEveryField<TimeRange>);

inline constexpr TimeRange TimeRange::zero{};

}
