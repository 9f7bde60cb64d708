#pragma once

#include <TavaroCore/Values/RGBAColor.h>
#include <TavaroRender/Composition/Private/CanvasGeometry.h>
#include <TavaroRender/Kernels/Vectors.h>

namespace tavaro {

// The numbers of a frame as the uniform blocks hold them.

inline Float2 float2(double x, double y) { return {static_cast<float>(x), static_cast<float>(y)}; }
inline Float2 float2(CanvasPoint point) { return float2(point.x, point.y); }

/// `strength` scales the alpha.
inline Float4 float4(RGBAColor const& color, double strength = 1) {
    return {static_cast<float>(color.r), static_cast<float>(color.g), static_cast<float>(color.b),
            static_cast<float>(color.a * strength)};
}

}
