#include <TavaroCore/Values/Easing.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

double spring(double t) {
    if (t <= 0) return 0;
    if (t >= 1) return 1;
    return std::exp2(-9 * t) * std::sin((10 * t - 0.75) * 6.981317007977318) + 1; // 2π ÷ 0.9
}

double anticipate(double t) {
    constexpr double c = 2.5949095;
    if (t < 0.5) {
        double const u = 2 * t;
        return u * u * ((c + 1) * u - c) / 2;
    }
    double const u = 2 * t - 2;
    return (u * u * ((c + 1) * u + c) + 2) / 2;
}

}

std::string_view displayName(Easing easing) {
    constexpr std::array<std::string_view, 6> names{"Linear", "Ease In", "Ease Out", "Smooth", "Spring", "Anticipate"};
    return names[static_cast<std::size_t>(easing)];
}

double apply(Easing easing, double t) {
    t = std::clamp(t, 0.0, 1.0);
    double const left = 1 - t;
    switch (easing) {
    case Easing::linear: return t;
    case Easing::easeIn: return t * t * t;
    case Easing::easeOut: return 1 - left * left * left;
    case Easing::smooth: return t < 0.5 ? 4 * t * t * t : 1 - (2 * left) * (2 * left) * (2 * left) / 2;
    case Easing::spring: return spring(t);
    case Easing::anticipate: return anticipate(t);
    }
    return t;
}

}
