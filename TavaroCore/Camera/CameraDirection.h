#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Style/CameraSettings.h>
#include <TavaroCore/Values/Geometry.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

enum class SceneLayout { screenOnly, overlay, split, cameraOnly };

constexpr std::array<std::string_view, 4> namesOf(SceneLayout) {
    return {"screenOnly", "overlay", "split", "cameraOnly"};
}

enum class CameraDirectorStyle { off, calm, dynamic, presenter };

constexpr std::array<std::string_view, 4> namesOf(CameraDirectorStyle) {
    return {"off", "calm", "dynamic", "presenter"};
}

/// A change of scene layout.
struct LayoutCue {
    UUID id = UUID::random();
    double time = 0; // output seconds
    SceneLayout scene = SceneLayout::overlay;
    bool isAutomatic = false;
    std::optional<std::string> reason; // the director's explanation

    static constexpr auto fields = std::tuple{
        field("id", &LayoutCue::id),         field("time", &LayoutCue::time),
        field("scene", &LayoutCue::scene),   field("isAutomatic", &LayoutCue::isAutomatic),
        field("reason", &LayoutCue::reason),
    };
    bool operator==(LayoutCue const&) const = default;
};
static_assert(listsEveryField<LayoutCue>);

/// A move of the camera bubble.
struct CameraMove {
    UUID id = UUID::random();
    double time = 0; // output seconds
    CameraPlacement placement = CameraPlacement::bottomRight;
    std::optional<UnitPoint2> position; // free position
    bool isAutomatic = false;

    static constexpr auto fields = std::tuple{
        field("id", &CameraMove::id),
        field("time", &CameraMove::time),
        field("placement", &CameraMove::placement),
        field("position", &CameraMove::position),
        field("isAutomatic", &CameraMove::isAutomatic),
    };
    bool operator==(CameraMove const&) const = default;
};
static_assert(listsEveryField<CameraMove>);

struct FaceSample {
    double t = 0; // camera-video time
    NormalizedRect rect;
    std::optional<double> yaw;
    std::optional<double> pitch;

    static constexpr auto fields = std::tuple{
        field("t", &FaceSample::t),
        field("rect", &FaceSample::rect),
        field("yaw", &FaceSample::yaw),
        field("pitch", &FaceSample::pitch),
    };
    bool operator==(FaceSample const&) const = default;
};
static_assert(listsEveryField<FaceSample>);

}
