#pragma once

#include <TavaroCore/Style/CameraSettings.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Values/TimeRange.h>

#include <array>
#include <vector>

namespace tavaro {

struct RecordingMetadata;

/// Where on the screen things happen: pointer travel, clicks and typing, so that a camera picture can keep away.
/// Positions are unit coordinates of the frame; times are those of the log it was made from.
class ScreenActivity {
public:
    explicit ScreenActivity(RecordingMetadata const& recording);

    /// Corners in the order in which equally quiet ones are preferred.
    static constexpr std::array<CameraPlacement, 4> corners{CameraPlacement::bottomRight, CameraPlacement::bottomLeft,
                                                            CameraPlacement::topRight, CameraPlacement::topLeft};

    /// How much happened near each corner within a time: lengths of the frame that the pointer travelled, a click
    /// counting as half of one and a key as a twentieth. Costs only the moments inside the range.
    std::array<double, 4> nearCorners(TimeRange const& range) const;

    /// The corner with the least activity near it.
    CameraPlacement quietestCorner(TimeRange const& range) const;

private:
    struct Moment {
        double t;
        UnitPoint2 position;
        double weight;
    };
    std::vector<Moment> moments_; // ascending in time
};

}
