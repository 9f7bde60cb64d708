#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Values/Geometry.h>

namespace tavaro {

/// The magnifying lens shown at one moment.
struct LoupeState {
    UnitPoint2 center = UnitPoint2::center; // in the source frame
    double radius = 0;                      // in the unit of `ZoomEvent::loupeSize`
    double magnification = 1;
    double presence = 0; // how far the lens has grown in: 1 is fully there

    static constexpr auto fields =
        std::tuple{field("center", &LoupeState::center), field("radius", &LoupeState::radius),
                   field("magnification", &LoupeState::magnification), field("presence", &LoupeState::presence)};
    bool operator==(LoupeState const&) const = default;
};
static_assert(listsEveryField<LoupeState>);

}
