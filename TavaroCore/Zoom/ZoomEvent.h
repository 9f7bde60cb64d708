#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Easing.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Values/TimeRange.h>

#include <algorithm>
#include <optional>
#include <string>

namespace tavaro {

/// "camera" zooms the whole frame, "loupe" is a magnifying lens over the unzoomed frame.
enum class ZoomStyle { camera, loupe };

constexpr std::array<std::string_view, 2> namesOf(ZoomStyle) { return {"camera", "loupe"}; }

struct ZoomEvent {
    UUID id = UUID::random();
    double start = 0;
    double duration = 0;
    double rampIn = 0.6;                    // seconds to reach full zoom
    double rampOut = 0.45;                  // seconds to return
    UnitPoint2 center = UnitPoint2::center; // focus in the source frame
    double scale = 1.6;                     // magnification
    Easing easing = Easing::smooth;
    double motionBlur = 0;
    bool isAutomatic = false; // made by Auto Polish
    bool followsCursor = false;
    ZoomStyle style = ZoomStyle::camera;
    double loupeSize = 0.17; // lens radius as a share of the canvas's smaller side
    std::optional<std::string> note;

    double end() const { return start + duration; }
    TimeRange range() const { return {start, duration}; }
    bool isLoupe() const { return style == ZoomStyle::loupe; }
    /// Share of the frame's width and height that stays visible at full zoom.
    double visibleFraction() const { return 1 / std::max(scale, 1.0); }

    static constexpr auto fields = std::tuple{
        field("id", &ZoomEvent::id),
        field("start", &ZoomEvent::start),
        field("duration", &ZoomEvent::duration),
        field("rampIn", &ZoomEvent::rampIn),
        field("rampOut", &ZoomEvent::rampOut),
        field("center", &ZoomEvent::center),
        field("scale", &ZoomEvent::scale),
        field("easing", &ZoomEvent::easing),
        field("motionBlur", &ZoomEvent::motionBlur),
        field("isAutomatic", &ZoomEvent::isAutomatic),
        field("followsCursor", &ZoomEvent::followsCursor),
        field("style", &ZoomEvent::style),
        field("loupeSize", &ZoomEvent::loupeSize),
        field("note", &ZoomEvent::note),
    };
    bool operator==(ZoomEvent const&) const = default;
};
static_assert(listsEveryField<ZoomEvent>);

}
