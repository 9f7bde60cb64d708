#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Values/Geometry.h>

namespace tavaro {

/// What the screen camera shows at one moment.
struct CameraState {
    double scale = 1;                       // magnification; 1 is the whole frame
    UnitPoint2 center = UnitPoint2::center; // of the visible part of the source frame
    double motionBlur = 0;                  // 0…1
    double velocity = 0;                    // 0…1, how fast the camera is moving

    static const CameraState identity;

    static constexpr auto fields =
        std::tuple{field("scale", &CameraState::scale), field("center", &CameraState::center),
                   field("motionBlur", &CameraState::motionBlur), field("velocity", &CameraState::velocity)};
    bool operator==(CameraState const&) const = default;
};
static_assert(listsEveryField<CameraState>);

inline constexpr CameraState CameraState::identity{};

}
