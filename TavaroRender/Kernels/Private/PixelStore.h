#pragma once

#include <cstdint>

#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

/// A colour channel as the canvas keeps it: 8 bits, rounded to nearest.
inline std::uint8_t channelByte(float value) { return static_cast<std::uint8_t>(saturate(value) * 255.0f + 0.5f); }

inline Float4 loadPixel(std::uint8_t const* p) {
    return {static_cast<float>(p[0]) / 255.0f, static_cast<float>(p[1]) / 255.0f, static_cast<float>(p[2]) / 255.0f,
            static_cast<float>(p[3]) / 255.0f};
}

inline void storePixel(std::uint8_t* p, Float4 color) {
    p[0] = channelByte(color.x);
    p[1] = channelByte(color.y);
    p[2] = channelByte(color.z);
    p[3] = channelByte(color.w);
}

/// A place along one axis as a whole number from 0 to `limit`; what is not a number is 0.
inline int placeWithin(float v, int limit) {
    if (!(v > 0)) return 0;
    return v < static_cast<float>(limit) ? static_cast<int>(v) : limit;
}

/// The centre of a canvas pixel.
inline Float2 pixelCenter(int x, int y) { return {static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f}; }

}
