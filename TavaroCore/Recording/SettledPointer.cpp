#include <TavaroCore/Recording/SettledPointer.h>

#include <TavaroCore/Recording/RecordingMetadata.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tavaro {

namespace {

using Samples = std::vector<CursorSample>;

// Seconds.
constexpr double frame = 1.0 / 60;  // between samples of a path, as takes have them
constexpr double sameTime = 0.0005; // samples this near to a click are the click's
constexpr double reach = 1;         // a smoothed path is its own again this long after a move, and before one
constexpr double shortestRest = 0.15;
constexpr double longestStep = 0.5; // nobody moves for longer without a sample
constexpr double crossing = 1;      // of a hand over the whole frame
constexpr double longestMove = 0.5;

/// The gap from which on the pointer rests: more than the log has between samples of a move.
double restFrom(Samples const& samples) {
    std::vector<double> gaps;
    for (std::size_t i = 1; i < samples.size(); ++i) gaps.push_back(samples[i].t - samples[i - 1].t);
    if (gaps.empty()) return longestStep;
    auto const middle = gaps.begin() + static_cast<std::ptrdiff_t>(gaps.size() / 2);
    std::nth_element(gaps.begin(), middle, gaps.end());
    return std::clamp(3 * *middle, shortestRest, longestStep);
}

/// The samples with one at each click.
Samples withClicks(Samples const& samples, std::vector<ClickEvent> const& clicks) {
    Samples path;
    path.reserve(samples.size() + clicks.size());
    auto next = samples.begin();
    for (auto const& click : clicks) {
        for (; next != samples.end() && next->t <= click.t + sameTime; ++next) path.push_back(*next);
        auto const& before = path.empty() ? samples.front() : path.back();
        CursorSample const pressed{click.t, click.position, before.kind};
        while (!path.empty() && path.back().t >= click.t - sameTime) path.pop_back();
        path.push_back(pressed);
    }
    path.insert(path.end(), next, samples.end());
    return path;
}

/// A path while it is made; ascending.
struct Path {
    Samples samples;

    /// Every sixtieth of a second after the last sample, and at `end`.
    template<class Place> void walk(double end, Place place) {
        double const begin = samples.back().t;
        auto const kind = samples.back().kind;
        auto const steps = static_cast<int>(std::ceil((end - begin) / frame - 1e-6));
        for (int i = 1; i <= steps; ++i) {
            double const t = i == steps ? end : begin + i * frame;
            samples.push_back({t, place(t), kind});
        }
    }

    void stayUntil(double end) {
        auto const position = samples.back().position;
        auto const here = [&](double) { return position; };
        double const begin = samples.back().t;
        if (end - begin > 2 * reach) {
            walk(begin + reach, here);
            samples.push_back({end - reach, position, samples.back().kind});
        }
        walk(end, here);
    }

    /// Rests, and then moves to `next` in the time that a hand takes.
    void restBefore(CursorSample const& next) {
        auto const from = samples.back();
        double const distance = std::hypot(next.position.x - from.position.x, next.position.y - from.position.y);
        double const longest = std::min(longestMove, (next.t - from.t) / 2);
        double const move = std::min(std::max(distance * crossing, frame), longest);
        stayUntil(next.t - move);
        walk(next.t,
             [&](double t) { return UnitPoint2::lerp(from.position, next.position, (t - (next.t - move)) / move); });
        samples.pop_back(); // the next sample itself
    }
};

Samples settled(Samples const& samples, std::vector<ClickEvent> const& clicks, double duration) {
    if (samples.empty()) return {};
    double const rest = restFrom(samples);
    Path path;
    for (auto const& sample : withClicks(samples, clicks)) {
        bool const isRest = !path.samples.empty() && path.samples.back().t < duration &&
                            sample.t - path.samples.back().t > rest && std::isfinite(sample.t);
        if (isRest) path.restBefore(sample);
        path.samples.push_back(sample);
    }
    return std::move(path.samples);
}

}

void settlePointer(RecordingMetadata& log, double duration) {
    log.cursorSamples = settled(log.cursorSamples, log.clicks, duration);
    if (log.rawCursorSamples) *log.rawCursorSamples = settled(*log.rawCursorSamples, log.clicks, duration);
}

}
