#pragma once

#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

/// A hash of a point, 0…1. Every operation rounds once (no fused multiply-add), so all back ends have the same grain.
inline float hash21(Float2 p) {
    p = {fract(p.x * 123.34f), fract(p.y * 456.21f)};
    auto const shift = dot(p, p + 45.32f);
    p = p + shift;
    return fract(p.x * p.y);
}

/// Smooth noise, 0…1: the hash at the integer points, mixed with smoothstep weights.
inline float valueNoise(Float2 p) {
    Float2 const corner{std::floor(p.x), std::floor(p.y)};
    auto const f = p - corner;
    Float2 const weight{f.x * f.x * (3.0f - 2.0f * f.x), f.y * f.y * (3.0f - 2.0f * f.y)};
    auto const top = mix(hash21(corner), hash21(corner + Float2{1, 0}), weight.x);
    auto const bottom = mix(hash21(corner + Float2{0, 1}), hash21(corner + Float2{1, 1}), weight.x);
    return mix(top, bottom, weight.y);
}

}
