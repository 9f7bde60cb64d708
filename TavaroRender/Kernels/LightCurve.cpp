#include <TavaroRender/Kernels/Private/LightCurve.h>

namespace tavaro {

LightCurve::LightCurve(float gain) : gain(gain) {
    if (!(gain > 0)) return; // nothing is left above the straight part
    constexpr float encodedKnee = 0.04045f;
    constexpr float linearKnee = 0.0031308f;
    slope = std::pow(gain, 1.0f / 2.4f);
    offset = 0.055f * slope - 0.055f;
    if (gain >= 1) {
        low = 12.92f * linearKnee / gain;
        high = encodedKnee;
    } else {
        low = encodedKnee;
        high = 1.055f * std::pow(linearKnee / gain, 1.0f / 2.4f) - 0.055f;
    }
}

}
