#pragma once

#include <cstddef>
#include <cstdint>
#include <tuple>

#include <TavaroCore/Records/Fields.h>
#include <TavaroRender/Kernels/Vectors.h>

namespace tavaro {

struct CameraGrade;

/// What `cameraOverlay` needs to draw the camera's picture in its box: a bubble, the pane of a split, or a person cut
/// out of the room. Layout, units and colours as in `CompositeUniforms`.
struct CameraUniforms {
    Float4 borderColor;
    Float2 canvasSize;
    Float2 center; // of the box
    Float2 halfSize;
    float cornerRadius = 0; // counts up to half the smaller side
    float borderWidth = 0;  // the line is centred on the box's edge
    float shadowOpacity = 0;
    float opacity = 1; // of everything drawn
    std::int32_t mirrored = 0;
    float pad0 = 0;
    float pad1 = 0;
    float pad2 = 0;
    Float2 cropOrigin; // the part of the camera's picture that is shown, normalised
    Float2 cropSize{1, 1};
    std::int32_t useMatte = 0; // 1: the person is cut out by the matte; no border and no shadow of the box
    float pad3 = 0;
    float pad4 = 0;
    float pad5 = 0;
    Float4 grade0{0, 1, 1, 0}; // exposure (stops), contrast, saturation, temperature
    Float4 grade1;             // tint, lift, vignette, split tone
    float lookStrength = 0;    // 0…1, how much of the graded picture shows
    float sharpen = 0;
    std::int32_t useLUT = 0; // 1: the cube LUT comes last in the grade
    float pad6 = 0;

    static constexpr auto fields = std::tuple{
        field("borderColor", &CameraUniforms::borderColor),
        field("canvasSize", &CameraUniforms::canvasSize),
        field("center", &CameraUniforms::center),
        field("halfSize", &CameraUniforms::halfSize),
        field("cornerRadius", &CameraUniforms::cornerRadius),
        field("borderWidth", &CameraUniforms::borderWidth),
        field("shadowOpacity", &CameraUniforms::shadowOpacity),
        field("opacity", &CameraUniforms::opacity),
        field("mirrored", &CameraUniforms::mirrored),
        field("pad0", &CameraUniforms::pad0),
        field("pad1", &CameraUniforms::pad1),
        field("pad2", &CameraUniforms::pad2),
        field("cropOrigin", &CameraUniforms::cropOrigin),
        field("cropSize", &CameraUniforms::cropSize),
        field("useMatte", &CameraUniforms::useMatte),
        field("pad3", &CameraUniforms::pad3),
        field("pad4", &CameraUniforms::pad4),
        field("pad5", &CameraUniforms::pad5),
        field("grade0", &CameraUniforms::grade0),
        field("grade1", &CameraUniforms::grade1),
        field("lookStrength", &CameraUniforms::lookStrength),
        field("sharpen", &CameraUniforms::sharpen),
        field("useLUT", &CameraUniforms::useLUT),
        field("pad6", &CameraUniforms::pad6),
    };

    bool operator==(CameraUniforms const&) const = default;
};

static_assert(sizeof(CameraUniforms) == 160);
static_assert(offsetof(CameraUniforms, cropOrigin) == 72 && offsetof(CameraUniforms, grade0) == 112);
static_assert(listsEveryField<CameraUniforms>);

/// Fills in the eight numbers of a look and how much of it shows.
void setGrade(CameraUniforms& uniforms, CameraGrade const& grade, double strength);

}
