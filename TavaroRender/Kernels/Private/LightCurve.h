#pragma once

#include <limits>

#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

/// What a gain in linear light does to an encoded channel. Both parts of the transfer curve are powers of a straight
/// line, so a gain leaves each of them straight: `gain`·x below `low`, `slope`·x + `offset` above `high`. Only between,
/// where a colour passes from one part to the other, are powers left to work out.
struct LightCurve {
    float gain = 1;
    float low = std::numeric_limits<float>::infinity();
    float high = std::numeric_limits<float>::infinity();
    float slope = 1;
    float offset = 0;

    LightCurve() = default;
    explicit LightCurve(float gain);
};

/// A gain brings colours between the parts up (out of the straight one) or down (into it).
inline bool brightens(LightCurve const& curve) { return curve.gain >= 1; }

}
