#pragma once

#include <cstdint>
#include <tuple>

#include <TavaroCore/Records/Fields.h>
#include <TavaroRender/Kernels/UniformModes.h>
#include <TavaroRender/Kernels/Vectors.h>

namespace tavaro {

/// What `composite` needs to draw one frame. The layout is shared with every back end: fields keep their order and the
/// padding stays. Lengths are canvas pixels (origin top-left, y downward) unless a comment says "normalised"; colours
/// are sRGB-encoded, 0…1, straight alpha.
struct CompositeUniforms {
    Float4 bgColor0; // solid: 0; linear, radial: 0→1; aurora: 0, 1, 2; mesh: the corners, row by row
    Float4 bgColor1;
    Float4 bgColor2;
    Float4 bgColor3;
    Float4 borderColor; // hairline on the screen layer's outer edge
    Float4 shadowColor; // its alpha is not used; `shadowOpacity` is
    Float4 matColor;    // the inset band
    Float4 frameTint;   // device body colour; alpha 0 is the standard finish
    Float4 frameInset;  // frame past the content, or over content that reaches under it: left, top, right, bottom
    Float2 canvasSize;
    Float2 contentOrigin; // the recording
    Float2 contentSize;
    Float2 clipOrigin; // what the screen layer may paint: content plus device frame, or the pane of a split
    Float2 clipSize;
    Float2 zoomCenter{0.5f, 0.5f}; // normalised point of the recording at the content's centre
    Float2 blurVector;             // normalised direction × strength of the camera's motion
    Float2 bgParam;                // linear: direction; radial: centre; aurora: speed in x
    float cornerRadius = 0;
    float borderWidth = 0;
    float shadowRadius = 0;
    float shadowOffsetY = 0;
    float zoomScale = 1;
    float blurStrength = 0; // only switches the blur on; its length is `blurVector`
    float time = 0;         // seconds, drives the animated backgrounds
    float frameRadius = 0;  // outer corner radius of the device frame
    BackgroundMode bgMode = BackgroundMode::solid;
    FrameMode frameMode = FrameMode::none;
    std::int32_t blurTaps = 0; // at most 16 count
    float shadowOpacity = 0;
    Float2 loupeCenter;
    float loupeRadius = 0;   // 0: no loupe
    float loupeMag = 1;      // magnification at the lens's middle
    float loupePresence = 0; // 0…1, fades the glass in and out
    float sharpen = 0;       // strength of the zoom sharpening
    float innerRadius = 0;   // the recording's own corner radius inside an inset band or a device frame
    float pad1 = 0;
    Float2 cropOrigin; // the part of the recording kept, normalised
    Float2 cropSize{1, 1};

    static constexpr auto fields = std::tuple{
        field("bgColor0", &CompositeUniforms::bgColor0),
        field("bgColor1", &CompositeUniforms::bgColor1),
        field("bgColor2", &CompositeUniforms::bgColor2),
        field("bgColor3", &CompositeUniforms::bgColor3),
        field("borderColor", &CompositeUniforms::borderColor),
        field("shadowColor", &CompositeUniforms::shadowColor),
        field("matColor", &CompositeUniforms::matColor),
        field("frameTint", &CompositeUniforms::frameTint),
        field("frameInset", &CompositeUniforms::frameInset),
        field("canvasSize", &CompositeUniforms::canvasSize),
        field("contentOrigin", &CompositeUniforms::contentOrigin),
        field("contentSize", &CompositeUniforms::contentSize),
        field("clipOrigin", &CompositeUniforms::clipOrigin),
        field("clipSize", &CompositeUniforms::clipSize),
        field("zoomCenter", &CompositeUniforms::zoomCenter),
        field("blurVector", &CompositeUniforms::blurVector),
        field("bgParam", &CompositeUniforms::bgParam),
        field("cornerRadius", &CompositeUniforms::cornerRadius),
        field("borderWidth", &CompositeUniforms::borderWidth),
        field("shadowRadius", &CompositeUniforms::shadowRadius),
        field("shadowOffsetY", &CompositeUniforms::shadowOffsetY),
        field("zoomScale", &CompositeUniforms::zoomScale),
        field("blurStrength", &CompositeUniforms::blurStrength),
        field("time", &CompositeUniforms::time),
        field("frameRadius", &CompositeUniforms::frameRadius),
        field("bgMode", &CompositeUniforms::bgMode),
        field("frameMode", &CompositeUniforms::frameMode),
        field("blurTaps", &CompositeUniforms::blurTaps),
        field("shadowOpacity", &CompositeUniforms::shadowOpacity),
        field("loupeCenter", &CompositeUniforms::loupeCenter),
        field("loupeRadius", &CompositeUniforms::loupeRadius),
        field("loupeMag", &CompositeUniforms::loupeMag),
        field("loupePresence", &CompositeUniforms::loupePresence),
        field("sharpen", &CompositeUniforms::sharpen),
        field("innerRadius", &CompositeUniforms::innerRadius),
        field("pad1", &CompositeUniforms::pad1),
        field("cropOrigin", &CompositeUniforms::cropOrigin),
        field("cropSize", &CompositeUniforms::cropSize),
    };

    bool operator==(CompositeUniforms const&) const = default;
};

static_assert(sizeof(CompositeUniforms) == 304);
static_assert(listsEveryField<CompositeUniforms>);

}
