#pragma once

#include <TavaroCore/Recording/RecordingMetadata.h>

#include <optional>
#include <span>
#include <vector>

namespace tavaro {

/// Share of the frame's width and height that a zoom shows: 1 / scale.
struct VisibleFraction {
    double width = 1;
    double height = 1;
};

/// The path of a camera that follows the pointer: it rests while the pointer stays inside a dead zone around its
/// centre, and moves only as far as needed to keep the pointer at the zone's edge.
class AutoPan {
public:
    /// `deadZone` is the zone's size as a share of the visible part, clamped to 0…0.95; `smoothing` counts within 0…1.
    AutoPan(double deadZone, double smoothing);

    double deadZone() const { return deadZone_; }
    double smoothing() const { return smoothing_; }

    /// One point of the camera's centre per pointer sample, at the same time. On an axis that shows the whole frame the
    /// centre is 0.5; elsewhere the visible part never leaves the frame.
    std::vector<CursorSample> path(std::span<CursorSample const> cursor, VisibleFraction visible) const;

    /// The path's point at a time, as `CursorSmoother::position`.
    static std::optional<UnitPoint2> centre(std::vector<CursorSample> const& path, double at);

private:
    double deadZone_;
    double smoothing_;
};

}
