#include <TavaroRender/Kernels/GradeCurves.h>

#include <TavaroRender/Kernels/CameraUniforms.h>
#include <TavaroRender/Kernels/GradeFormula.h>

#include <cmath>

namespace tavaro {

namespace {

constexpr int steps = static_cast<int>(GradeCurves::highest * GradeCurves::stepsPerUnit);

/// How much the curves may be off: by less than a third of a step of the canvas after what follows enlarged it. A cube
/// LUT may enlarge it most of all.
float allowedError(CameraUniforms const& u, bool hasLUT) {
    auto const saturation = u.grade0.z;
    auto const enlargedBy = std::abs(saturation) + std::abs(1 - saturation);
    return (hasLUT ? 0.02f : 0.3f) / 255 / enlargedBy;
}

}

void GradeCurves::prepare(CameraUniforms const& u, bool hasLUT) {
    Key const key{u.grade0, u.grade1, hasLUT};
    if (key_ == key) return;
    auto const gain = lightGain(u);
    auto const error = allowedError(u, hasLUT);
    areStraight_ = gain.x == 1 && gain.y == 1 && gain.z == 1;
    areExact_ = areStraight_ || (fill(u, 0, gain.x, error) && fill(u, 1, gain.y, error) && fill(u, 2, gain.z, error));
    key_ = key;
}

bool GradeCurves::fill(CameraUniforms const& u, int channel, float gain, float allowedError) {
    auto& curve = curves_[static_cast<std::size_t>(channel)];
    curve.resize(static_cast<std::size_t>(steps) + 2);
    auto const at = [&](float index) { return channelGraded(u, gain, index / stepsPerUnit); };
    for (std::size_t i = 0; i < curve.size(); ++i) curve[i] = at(static_cast<float>(i));
    if (!(gain >= 0)) return false;
    for (std::size_t i = 0; i + 1 < curve.size(); ++i) {
        auto const error = at(static_cast<float>(i) + 0.5f) - (curve[i] + curve[i + 1]) / 2;
        if (!(std::abs(error) <= allowedError)) return false;
    }
    return true;
}

}
