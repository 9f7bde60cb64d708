#include <TavaroCapture/Sound/Private/FractionalSample.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace tavaro {

namespace {

constexpr int taps = 2 * fractionalReach;
constexpr int phases = 512;
constexpr double windowShape = 9; // of Kaiser's window

using Taps = std::array<float, taps>;

double kaiser(double x) { // −1…1
    return std::cyl_bessel_i(0, windowShape * std::sqrt(std::max(1 - x * x, 0.0))) / std::cyl_bessel_i(0, windowShape);
}

double sinc(double x) { return x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x); }

/// Weights of the samples around a place that lies `fraction` behind the one in the middle.
Taps tapsAt(double fraction) {
    Taps result{};
    double sum = 0;
    std::array<double, taps> exact{};
    for (std::size_t i = 0; i < taps; ++i) {
        double const distance = static_cast<double>(i) - (fractionalReach - 1) - fraction;
        exact[i] = sinc(distance) * kaiser(distance / fractionalReach);
        sum += exact[i];
    }
    for (std::size_t i = 0; i < taps; ++i) result[i] = static_cast<float>(exact[i] / sum);
    return result;
}

std::array<Taps, phases + 1> const& table() {
    static auto const made = [] {
        std::array<Taps, phases + 1> result{};
        for (std::size_t i = 0; i < result.size(); ++i) result[i] = tapsAt(static_cast<double>(i) / phases);
        return result;
    }();
    return made;
}

}

StereoSample fractionalSample(std::span<StereoSample const> samples, double place) {
    double const whole = std::floor(place);
    double const phase = (place - whole) * phases;
    auto const row = static_cast<std::size_t>(phase);
    auto const& below = table()[row];
    auto const& above = table()[row + 1];
    auto const blend = static_cast<float>(phase - static_cast<double>(row));
    auto const from = samples.subspan(static_cast<std::size_t>(whole) - (fractionalReach - 1), taps);
    StereoSample result;
    for (std::size_t i = 0; i < taps; ++i) {
        float const weight = below[i] + blend * (above[i] - below[i]);
        result.left += weight * from[i].left;
        result.right += weight * from[i].right;
    }
    return result;
}

}
