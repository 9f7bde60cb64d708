#pragma once

#include <TavaroCore/Records/Fields.h>

#include <array>
#include <span>
#include <string_view>

namespace tavaro {

/// A named colour treatment of the camera's picture. `lut` is the user's own, from a cube file.
enum class CameraLook { natural, warm, cool, vivid, muted, film, golden, tealOrange, pastel, studio, mono, noir, lut };

constexpr std::array<std::string_view, 13> namesOf(CameraLook) {
    return {"natural",    "warm",   "cool",   "vivid", "muted", "film", "golden",
            "tealOrange", "pastel", "studio", "mono",  "noir",  "lut"};
}

std::string_view displayName(CameraLook look);

/// The looks that can be picked without a file, in the order they are offered.
std::span<CameraLook const> cameraLookPresets();

/// The numbers of a look, in the order in which they act: exposure and white balance in linear light, contrast, lift
/// and saturation on encoded values, then split tone and vignette.
struct CameraGrade {
    double exposure = 0;    // stops
    double contrast = 1;    // about the middle grey
    double saturation = 1;  // 0: grey
    double temperature = 0; // −1…1, warm is positive
    double tint = 0;        // green is negative, magenta positive
    double lift = 0;        // raises black toward white
    double vignette = 0;    // 0…1, darkens the corners
    double splitTone = 0;   // 0…1, teal shadows and orange highlights

    static constexpr auto fields = std::tuple{
        field("exposure", &CameraGrade::exposure),
        field("contrast", &CameraGrade::contrast),
        field("saturation", &CameraGrade::saturation),
        field("temperature", &CameraGrade::temperature),
        field("tint", &CameraGrade::tint),
        field("lift", &CameraGrade::lift),
        field("vignette", &CameraGrade::vignette),
        field("splitTone", &CameraGrade::splitTone),
    };
    bool operator==(CameraGrade const&) const = default;
};
static_assert(listsEveryField<CameraGrade>);

/// `natural` and `lut` leave the colours as they are: the first is not graded at all, the second by its table.
CameraGrade grade(CameraLook look);

}
