#include <TavaroCore/Cursor/CursorSmoother.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavaro {

namespace {

using Path = std::vector<CursorSample>;

/// Share of a new value that a first-order low-pass lets through in one step.
double passShare(double cutoff, double step) { return 1 / (1 + (1 / (2 * std::numbers::pi * cutoff)) / step); }

/// One axis of the adaptive low-pass: the faster the motion, the higher the cutoff.
class AdaptiveLowPass {
public:
    explicit AdaptiveLowPass(double amount) : minimumCutoff_(5.0 - 3.6 * amount), beta_(0.01 + 0.34 * amount) {}

    void restart(double value) {
        value_ = value;
        speed_ = 0;
    }

    /// The filtered value after `step` seconds; `speedShare` is passShare(speedCutoff, step).
    double next(double raw, double step, double speedShare) {
        double const speed = speedShare * ((raw - value_) / step) + (1 - speedShare) * speed_;
        double const share = passShare(minimumCutoff_ + beta_ * std::abs(speed), step);
        double const value = share * raw + (1 - share) * value_;
        if (!std::isfinite(value) || !std::isfinite(speed)) { // absurd positions in a damaged log
            restart(raw);
            return raw;
        }
        speed_ = speed;
        value_ = value;
        return value;
    }

private:
    double minimumCutoff_;
    double beta_; // cutoff in hertz gained per unit of speed
    double value_ = 0;
    double speed_ = 0;
};

/// Filters the points in the order of the iterators, in place; `direction` is −1 where that runs back in time. A step
/// that does not advance starts the filter anew.
template<class Iterator> void filter(Iterator first, Iterator last, double direction, double amount) {
    constexpr double speedCutoff = 1; // Hz
    AdaptiveLowPass across(amount);
    AdaptiveLowPass down(amount);
    across.restart(first->position.x);
    down.restart(first->position.y);
    for (auto previous = first++; first != last; previous = first++) {
        auto& position = first->position;
        double const step = direction * (first->t - previous->t);
        if (!(step > 0)) {
            across.restart(position.x);
            down.restart(position.y);
            continue;
        }
        double const speedShare = passShare(speedCutoff, step);
        position = {across.next(position.x, step, speedShare), down.next(position.y, step, speedShare)};
    }
}

/// The point as far beyond the end as `sample` lies before it, on the other side.
CursorSample reflected(CursorSample const& end, CursorSample const& sample) {
    return {end.t - (sample.t - end.t),
            {2 * end.position.x - sample.position.x, 2 * end.position.y - sample.position.y},
            sample.kind};
}

/// Odd reflection at both ends keeps the filter from dragging them toward a standstill.
Path padded(std::span<CursorSample const> samples, std::size_t pad) {
    Path path;
    path.reserve(samples.size() + 2 * pad);
    for (std::size_t k = pad; k >= 1; --k) path.push_back(reflected(samples.front(), samples[k]));
    path.insert(path.end(), samples.begin(), samples.end());
    for (std::size_t k = 1; k <= pad; ++k) path.push_back(reflected(samples.back(), samples[samples.size() - 1 - k]));
    return path;
}

Path filteredBothWays(std::span<CursorSample const> samples, double amount) {
    std::size_t const pad = std::min<std::size_t>(samples.size() - 1, 30);
    auto path = padded(samples, pad);
    filter(path.begin(), path.end(), 1, amount);
    filter(path.rbegin(), path.rend(), -1, amount);
    return {path.begin() + static_cast<std::ptrdiff_t>(pad), path.end() - static_cast<std::ptrdiff_t>(pad)};
}

double oneMinusCube(double u) { return 1 - u * u * u; }

void taperEnds(Path& path, std::span<CursorSample const> raw) {
    std::size_t const n = path.size();
    std::size_t const k = std::min(n / 4, std::min<std::size_t>(n, 30) / 2);
    auto const bend = [&](std::size_t i, double weight) {
        path[i].position = UnitPoint2::lerp(raw[i].position, path[i].position, weight);
    };
    for (std::size_t i = 0; k >= 2 && i < k; ++i) {
        double const weight = oneMinusCube(1 - static_cast<double>(i) / static_cast<double>(k));
        bend(i, weight);
        bend(n - 1 - i, weight);
    }
    path.front().position = raw.front().position;
    path.back().position = raw.back().position;
}

/// Time to the nearest of the ascending times; there is at least one.
double distanceToNearest(std::vector<double> const& times, double t) {
    auto const after = std::lower_bound(times.begin(), times.end(), t);
    double distance = after == times.end() ? t - times.back() : *after - t;
    if (after != times.begin()) distance = std::min(distance, t - *(after - 1));
    return distance;
}

void pinClicks(Path& path, std::span<CursorSample const> raw, std::span<ClickEvent const> clicks, double window) {
    if (clicks.empty() || !(window > 0)) return;
    std::vector<double> times(clicks.size());
    std::transform(clicks.begin(), clicks.end(), times.begin(), [](ClickEvent const& click) { return click.t; });
    std::sort(times.begin(), times.end());
    for (std::size_t i = 0; i < path.size(); ++i) {
        double const distance = distanceToNearest(times, path[i].t);
        if (distance >= window) continue;
        double const weight = oneMinusCube(1 - std::clamp(distance / window, 0.0, 1.0));
        path[i].position = UnitPoint2::lerp(raw[i].position, path[i].position, weight);
    }
}

double catmullRom(double p0, double p1, double p2, double p3, double u) {
    return 0.5 *
           (2 * p1 + (p2 - p0) * u + (2 * p0 - 5 * p1 + 4 * p2 - p3) * u * u + (3 * p1 - p0 - 3 * p2 + p3) * u * u * u);
}

}

CursorSmoother::CursorSmoother(double amount, double clickPinWindow)
    : amount_(std::clamp(amount, 0.0, 1.0))
    , clickPinWindow_(clickPinWindow) {}

std::vector<CursorSample> CursorSmoother::smooth(std::span<CursorSample const> samples,
                                                 std::span<ClickEvent const> clicks) const {
    if (samples.size() < 3 || !(amount_ > 0)) return {samples.begin(), samples.end()};
    auto path = filteredBothWays(samples, amount_);
    taperEnds(path, samples);
    pinClicks(path, samples, clicks, clickPinWindow_);
    return path;
}

std::optional<UnitPoint2> CursorSmoother::position(std::vector<CursorSample> const& path, double at) {
    std::size_t const n = path.size();
    if (n < 4) return cursorPosition(path, at);
    if (!(at > path.front().t)) return path.front().position;
    if (at >= path.back().t) return path.back().position;
    auto const after = std::upper_bound(path.begin(), path.end(), at,
                                        [](double time, CursorSample const& sample) { return time < sample.t; });
    if (after == path.begin() || after == path.end()) return path.back().position; // times out of order
    std::size_t const i = static_cast<std::size_t>(after - path.begin()) - 1;
    double const step = path[i + 1].t - path[i].t;
    if (!(step > 0)) return path[i + 1].position;
    double const u = (at - path[i].t) / step;
    auto const& p0 = path[i > 0 ? i - 1 : 0].position;
    auto const& p1 = path[i].position;
    auto const& p2 = path[i + 1].position;
    auto const& p3 = path[std::min(i + 2, n - 1)].position;
    return UnitPoint2{catmullRom(p0.x, p1.x, p2.x, p3.x, u), catmullRom(p0.y, p1.y, p2.y, p3.y, u)};
}

}
