#pragma once

#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

class ScreenSampler;
struct CompositeUniforms;

/// The share of an iMac's bottom inset that is its chin; the rest is the stand, which casts no shadow.
inline constexpr float chinShare = 0.42f;
inline constexpr float standShare = 0.58f;

/// Where the screen layer (recording and device frame) lies, worked out once a frame.
struct ScreenGeometry {
    explicit ScreenGeometry(CompositeUniforms const& uniforms);

    bool isEmpty = true;
    Float2 fullCenter, fullHalf;   // the clip rectangle: recording and frame
    float radius = 0;              // of its corners
    Float2 openingMin, openingMax; // where the recording is seen: all of it, or what a frame it overflows leaves open
    Float2 openingCenter, openingHalf;
    float innerRadius = 0; // of the opening's corners inside a device frame or a band

    float distance(Float2 point) const { return sdRoundedBox(point - fullCenter, fullHalf, radius); }
    float innerDistance(Float2 point) const { return sdRoundedBox(point - openingCenter, openingHalf, innerRadius); }
    /// An edge belongs to the opening.
    bool openingHolds(Float2 point) const {
        return point.x >= openingMin.x && point.x <= openingMax.x && point.y >= openingMin.y && point.y <= openingMax.y;
    }
    bool clipHolds(Float2 point) const;
};

/// Whether the opening has soft round corners, with the frame behind them: a band's always, a device's where it has a
/// radius.
bool hasRoundOpening(CompositeUniforms const& uniforms);

/// Colour and coverage of the device frame at a point outside the opening, or behind one of its corners.
Float4 frameColor(CompositeUniforms const& uniforms, ScreenGeometry const& geometry, Float2 point);

bool shadowIsVisible(CompositeUniforms const& uniforms);
/// Strength of the drop shadow, 0…1.
float shadowStrength(CompositeUniforms const& uniforms, ScreenGeometry const& geometry, Float2 point);

/// Whether the recording is smeared along the camera's motion, and with how many samples.
bool blursMotion(CompositeUniforms const& uniforms);
int motionBlurTaps(CompositeUniforms const& uniforms);
/// Weight of one of those samples, and its place relative to the middle one, in the recording's crop.
float motionBlurWeight(int tap, int taps);
Float2 motionBlurShift(CompositeUniforms const& uniforms, int tap, int taps);

/// The recording at a canvas point: zoomed, and smeared or sharpened.
Float3 contentColor(CompositeUniforms const& uniforms, ScreenSampler const& sampler, Float2 point);

inline constexpr Float3 islandColor{0.02f, 0.02f, 0.025f};
/// Distance to a phone's camera island, which lies over the top of the recording.
float islandDistance(CompositeUniforms const& uniforms, ScreenGeometry const& geometry, Float2 point);

/// Colour and coverage of the screen layer at a point; coverage 0 where it does not reach.
Float4 screenLayer(CompositeUniforms const& uniforms, ScreenGeometry const& geometry, ScreenSampler const& sampler,
                   Float2 point);

}
