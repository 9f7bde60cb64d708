#pragma once

#include <TavaroCore/Records/UUID.h>

#include <optional>
#include <span>
#include <vector>

namespace tavaro {

struct DemoProject;

/// What a dragged edge is caught by; of those that are equally near the first.
enum class SnapKind { playhead, clipEdge, filmEdge, captionEdge, itemEdge, frame };

struct SnapTarget {
    double time = 0; // output seconds
    SnapKind kind = SnapKind::frame;

    bool operator==(SnapTarget const&) const = default;
};

/// How far a drag goes on from where the pointer is, and what caught it.
struct Snap {
    double by = 0; // seconds to add to each of its edges
    SnapTarget target;
};

/// The times that a drag is caught by, gathered once when it begins: n log n; a query is logarithmic.
class SnapTargets {
public:
    /// What is itself dragged catches nothing.
    SnapTargets(DemoProject const& project, double playhead, std::span<UUID const> dragged = {});

    /// The nearest target of any of the edges that is within `radius` seconds; else the first edge goes to the nearest
    /// whole frame.
    Snap snap(std::span<double const> edges, double radius, double framesASecond) const;
    /// Null when none is that near.
    SnapTarget const* nearest(double time, double radius) const;

private:
    std::vector<SnapTarget> targets_; // ascending
};

/// The seconds that so many pixels are at a scale of so many pixels a second.
constexpr double snapRadius(double pixels, double scale) { return scale > 0 ? pixels / scale : 0; }

}
