#pragma once

#include <algorithm>
#include <cmath>

#include <TavaroRender/Kernels/Vectors.h>

namespace tavaro {

// The small vector arithmetic that the kernel formulas are written in: 32-bit floats, one rounding per operation.

struct Float3 {
    float x = 0;
    float y = 0;
    float z = 0;
};

inline Float2 operator+(Float2 a, Float2 b) { return {a.x + b.x, a.y + b.y}; }
inline Float2 operator-(Float2 a, Float2 b) { return {a.x - b.x, a.y - b.y}; }
inline Float2 operator*(Float2 a, Float2 b) { return {a.x * b.x, a.y * b.y}; }
inline Float2 operator/(Float2 a, Float2 b) { return {a.x / b.x, a.y / b.y}; }
inline Float2 operator+(Float2 a, float b) { return {a.x + b, a.y + b}; }
inline Float2 operator-(Float2 a, float b) { return {a.x - b, a.y - b}; }
inline Float2 operator*(Float2 a, float b) { return {a.x * b, a.y * b}; }
inline Float2 operator/(Float2 a, float b) { return {a.x / b, a.y / b}; }
inline Float3 operator+(Float3 a, Float3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Float3 operator-(Float3 a, Float3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Float3 operator*(Float3 a, float b) { return {a.x * b, a.y * b, a.z * b}; }
inline Float3 operator+(Float3 a, float b) { return {a.x + b, a.y + b, a.z + b}; }

inline Float3 rgb(Float4 c) { return {c.x, c.y, c.z}; }
inline Float4 withAlpha(Float3 c, float alpha) { return {c.x, c.y, c.z, alpha}; }

inline float fract(float v) { return v - std::floor(v); }
/// To 0…1; what is not a number becomes 0.
inline float saturate(float v) { return v > 0.0f ? std::min(v, 1.0f) : 0.0f; }
inline Float2 saturate(Float2 v) { return {saturate(v.x), saturate(v.y)}; }
inline Float3 saturate(Float3 v) { return {saturate(v.x), saturate(v.y), saturate(v.z)}; }
inline float mix(float a, float b, float t) { return a + (b - a) * t; }
inline Float3 mix(Float3 a, Float3 b, float t) { return {mix(a.x, b.x, t), mix(a.y, b.y, t), mix(a.z, b.z, t)}; }
inline Float3 min(Float3 a, Float3 b) { return {std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)}; }
inline Float3 max(Float3 a, Float3 b) { return {std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)}; }
inline Float2 min(Float2 a, Float2 b) { return {std::min(a.x, b.x), std::min(a.y, b.y)}; }
inline Float2 max(Float2 a, Float2 b) { return {std::max(a.x, b.x), std::max(a.y, b.y)}; }
inline float dot(Float2 a, Float2 b) { return a.x * b.x + a.y * b.y; }
inline float length(Float2 v) { return std::sqrt(dot(v, v)); }

/// The unit vector along `v`; zero for the zero vector, which has no direction.
inline Float2 normalized(Float2 v) {
    auto const size = length(v);
    return size > 0 ? v / size : Float2{};
}

inline float smoothstep(float edge0, float edge1, float v) {
    auto const t = saturate((v - edge0) / (edge1 - edge0));
    return t * t * (3.0f - 2.0f * t);
}

inline float luma(Float3 c) { return 0.2126f * c.x + 0.7152f * c.y + 0.0722f * c.z; }

/// How much of a pixel lies inside a shape whose edge is `distance` px away (negative inside).
inline float coverage(float distance) { return 1.0f - smoothstep(-1.0f, 1.0f, distance); }

/// Signed distance from `p` to a box of rounded corners around the origin.
inline float sdRoundedBox(Float2 p, Float2 halfSize, float radius) {
    auto const qx = std::abs(p.x) - halfSize.x + radius;
    auto const qy = std::abs(p.y) - halfSize.y + radius;
    auto const outside = length({std::max(qx, 0.0f), std::max(qy, 0.0f)});
    return outside + std::min(std::max(qx, qy), 0.0f) - radius;
}

/// Lays `over` on the pixel with the given strength; the pixel becomes at least that opaque.
inline Float4 laidOver(Float4 pixel, Float3 over, float strength) {
    return withAlpha(mix(rgb(pixel), over, strength), std::max(pixel.w, strength));
}

}
