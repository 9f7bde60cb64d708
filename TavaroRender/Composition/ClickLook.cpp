#include <TavaroRender/Composition/Private/ClickLook.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

ClickLook clickLook(ClickEffect effect, double progress) {
    double const p = std::clamp(progress, 0.0, 1.0);
    double const left = 1 - p;
    double const grown = 1 - left * left * left;             // quick, then slow
    double const appearing = std::clamp(p / 0.06, 0.0, 1.0); // hides the pop of the first frame
    switch (effect) {
    case ClickEffect::none: return {};
    case ClickEffect::ripple: return {0.25 + 1.05 * grown, appearing * std::pow(left, 1.4)};
    case ClickEffect::pulse: return {0.35 + 0.75 * grown, appearing * 0.65 * std::pow(left, 1.3)};
    case ClickEffect::ring: return {0.30 + 0.90 * grown, appearing * left * (1 + p)};
    case ClickEffect::prism: return {0.25 + 1.25 * grown, appearing * std::pow(left, 1.2)};
    case ClickEffect::spotlight: return {2.2, std::sin(M_PI * p) * std::sin(M_PI * p)};
    }
    return {};
}

}
