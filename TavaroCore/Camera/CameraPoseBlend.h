#pragma once

#include <TavaroCore/Camera/CameraDirection.h>

#include <algorithm>
#include <optional>

namespace tavaro {

/// Where the webcam stands on the canvas.
struct CameraPose {
    SceneLayout scene = SceneLayout::overlay;
    CameraPlacement placement = CameraPlacement::bottomRight;
    std::optional<UnitPoint2> position; // free position, instead of the placement

    bool operator==(CameraPose const&) const = default;
};

/// The webcam on its way from one pose to the next.
class CameraPoseBlend {
public:
    /// `progress` is clamped to 0…1.
    CameraPoseBlend(CameraPose const& from, CameraPose const& to, double progress)
        : from_(from)
        , to_(to)
        , progress_(std::clamp(progress, 0.0, 1.0)) {}

    /// Standing still.
    static CameraPoseBlend steady(CameraPose const& pose) { return {pose, pose, 1}; }

    CameraPose const& from() const { return from_; }
    CameraPose const& to() const { return to_; }
    double progress() const { return progress_; }
    bool isSteady() const { return progress_ >= 1; }

    bool operator==(CameraPoseBlend const&) const = default;

private:
    CameraPose from_;
    CameraPose to_;
    double progress_;
};

}
