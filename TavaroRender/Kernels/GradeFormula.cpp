#include <TavaroRender/Kernels/Private/GradeFormula.h>

#include <TavaroCore/Looks/CubeLUT.h>
#include <TavaroCore/Style/CameraLook.h>
#include <TavaroRender/Kernels/CameraUniforms.h>
#include <TavaroRender/Kernels/Private/Colour.h>

namespace tavaro {

void setGrade(CameraUniforms& uniforms, CameraGrade const& grade, double strength) {
    auto const single = [](double value) { return static_cast<float>(value); };
    uniforms.grade0 = {single(grade.exposure), single(grade.contrast), single(grade.saturation),
                       single(grade.temperature)};
    uniforms.grade1 = {single(grade.tint), single(grade.lift), single(grade.vignette), single(grade.splitTone)};
    uniforms.lookStrength = single(strength);
}

Float3 lightGain(CameraUniforms const& u) {
    auto const temperature = u.grade0.w;
    auto const tint = u.grade1.x;
    Float3 const balance{1.0f + temperature * 0.50f + tint * 0.12f, 1.0f - tint * 0.22f,
                         1.0f - temperature * 0.50f + tint * 0.12f};
    return balance * std::exp2(u.grade0.x);
}

float channelGraded(CameraUniforms const& u, float gain, float encoded) {
    auto const lit = saturate(toSRGB(toLinear(encoded) * gain));
    auto const contrasted = (lit - 0.5f) * u.grade0.y + 0.5f;
    return contrasted + u.grade1.y * (1.0f - contrasted);
}

Float3 withSaturation(CameraUniforms const& u, Float3 color) {
    auto const grey = luma(color);
    return mix({grey, grey, grey}, color, u.grade0.z);
}

Float3 withSplitTone(CameraUniforms const& u, Float3 color) {
    auto const amount = u.grade1.w;
    if (!(amount > leastLook)) return color;
    constexpr Float3 shadows{-0.04f, 0.02f, 0.06f};
    constexpr Float3 highlights{0.06f, 0.02f, -0.05f};
    return color + mix(shadows, highlights, smoothstep(0.2f, 0.8f, luma(color))) * amount;
}

float vignetteFactor(CameraUniforms const& u, Float2 local) {
    auto const amount = u.grade1.z;
    if (!(amount > leastLook)) return 1;
    return 1.0f - smoothstep(0.35f, 0.95f, length(local - 0.5f) * 1.414f) * amount * 0.6f;
}

Float3 gradedCamera(CameraUniforms const& u, CubeLUT const* lut, Float3 color, Float2 local) {
    if (!(u.lookStrength > leastLook)) return color;
    auto const gain = lightGain(u);
    Float3 graded{channelGraded(u, gain.x, color.x), channelGraded(u, gain.y, color.y),
                  channelGraded(u, gain.z, color.z)};
    graded = withSplitTone(u, withSaturation(u, graded)) * vignetteFactor(u, local);
    if (u.useLUT != 0 && lut) {
        auto const [r, g, b] = lut->apply({graded.x, graded.y, graded.z});
        graded = {r, g, b};
    }
    return mix(color, saturate(graded), u.lookStrength);
}

}
