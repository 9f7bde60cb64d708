#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Style/CameraLook.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Values/RGBAColor.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

enum class CameraShape { circle, roundedSquare, square, full, wide };

constexpr std::array<std::string_view, 5> namesOf(CameraShape) {
    return {"circle", "roundedSquare", "square", "full", "wide"};
}

enum class CameraPlacement { bottomLeft, bottomRight, topLeft, topRight, left, right, top, bottom };

constexpr std::array<std::string_view, 8> namesOf(CameraPlacement) {
    return {"bottomLeft", "bottomRight", "topLeft", "topRight", "left", "right", "top", "bottom"};
}

struct CameraSettings {
    bool isEnabled = true;
    CameraShape shape = CameraShape::circle;
    CameraPlacement placement = CameraPlacement::bottomRight;
    std::optional<UnitPoint2> position; // free position
    double size = 0.24;                 // share of the canvas's smaller side
    double padding = 0.03;              // from the canvas's edge, a share of its smaller side
    double shadowOpacity = 0.35;
    double borderWidth = 3; // pixels at a canvas whose smaller side is 1080
    RGBAColor borderColor = {1, 1, 1, 0.9};
    bool mirrored = true;
    bool avoidsContent = false;
    bool fillsCanvas = false;
    bool cutout = false; // the person is cut out of the background
    bool tracksFace = false;
    double faceZoom = 1;
    bool hidesWhenSilent = false;
    NormalizedRect crop = {0, 0, 1, 1}; // of the camera frame
    CameraLook look = CameraLook::natural;
    double lookStrength = 1;
    std::optional<std::string> lutAsset; // asset name of a cube LUT file
    double sharpen = 0;

    static constexpr auto fields = std::tuple{
        field("isEnabled", &CameraSettings::isEnabled),
        field("shape", &CameraSettings::shape),
        field("placement", &CameraSettings::placement),
        field("position", &CameraSettings::position),
        field("size", &CameraSettings::size),
        field("padding", &CameraSettings::padding),
        field("shadowOpacity", &CameraSettings::shadowOpacity),
        field("borderWidth", &CameraSettings::borderWidth),
        field("borderColor", &CameraSettings::borderColor),
        field("mirrored", &CameraSettings::mirrored),
        field("avoidsContent", &CameraSettings::avoidsContent),
        field("fillsCanvas", &CameraSettings::fillsCanvas),
        field("cutout", &CameraSettings::cutout),
        field("tracksFace", &CameraSettings::tracksFace),
        field("faceZoom", &CameraSettings::faceZoom),
        field("hidesWhenSilent", &CameraSettings::hidesWhenSilent),
        field("crop", &CameraSettings::crop),
        field("look", &CameraSettings::look),
        field("lookStrength", &CameraSettings::lookStrength),
        field("lutAsset", &CameraSettings::lutAsset),
        field("sharpen", &CameraSettings::sharpen),
    };
    bool operator==(CameraSettings const&) const = default;
};
static_assert(listsEveryField<CameraSettings>);

}
