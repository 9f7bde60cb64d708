#include <TavaroRender/Kernels/Private/Colour.h>

namespace tavaro {

float toLinear(float encoded) {
    return encoded <= 0.04045f ? encoded / 12.92f : std::pow((encoded + 0.055f) / 1.055f, 2.4f);
}

float toSRGB(float linear) {
    return linear <= 0.0031308f ? 12.92f * linear : 1.055f * std::pow(linear, 1.0f / 2.4f) - 0.055f;
}

Float3 mixLinear(Float3 a, Float3 b, float t) {
    return {
        toSRGB(mix(toLinear(a.x), toLinear(b.x), t)),
        toSRGB(mix(toLinear(a.y), toLinear(b.y), t)),
        toSRGB(mix(toLinear(a.z), toLinear(b.z), t)),
    };
}

}
