#include <TavaroCapture/Camera/Private/CameraMode.h>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace tavaro {

namespace {

constexpr double smoothRate = 23.9; // pictures a second

double pixelsOf(CameraMode const& mode) { return std::max(1.0, double{1} * mode.width * mode.height); }

/// How far from the wanted size, where a larger picture counts as farther by its cost.
double distance(CameraMode const& mode, CameraMode const& wanted) {
    double const size = std::log2(pixelsOf(mode) / pixelsOf(wanted));
    double const shape =
        std::log2(double{1} * mode.width / mode.height) - std::log2(double{1} * wanted.width / wanted.height);
    return (size > 0 ? 1.5 * size : -size) + std::abs(shape);
}

/// Least is best.
auto rankOf(CameraMode const& mode, CameraMode const& wanted) {
    bool const isSlow = mode.fps > 0 && mode.fps < std::min(smoothRate, wanted.fps);
    return std::tuple(isSlow, isSlow ? -mode.fps : 0.0, distance(mode, wanted), mode.layout == DeviceLayout::jpeg,
                      std::abs(mode.fps - wanted.fps));
}

}

std::optional<CameraMode> chosenMode(std::vector<CameraMode> const& modes, CameraMode const& wanted) {
    auto const best = std::ranges::min_element(
        modes, [&](CameraMode const& a, CameraMode const& b) { return rankOf(a, wanted) < rankOf(b, wanted); });
    if (best == modes.end()) return std::nullopt;
    return *best;
}

std::vector<CameraSize> const& usualCameraSizes() {
    static std::vector<CameraSize> const sizes{{1280, 720}, {1920, 1080}, {640, 480}, {640, 360},
                                               {960, 540},  {800, 600},   {320, 240}};
    return sizes;
}

}
