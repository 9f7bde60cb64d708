#include <Tavaro/Studio/Timeline/RulerTicks.h>

#include <TavaroCore/Values/Timecode.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace tavaro {

namespace {

/// A step from label to label, and into how many small ones it is divided.
struct Step {
    double seconds = 0;
    int parts = 1;
};

constexpr std::array<Step, 20> wholeSteps = {{{1, 4},     {2, 4},     {5, 5},     {10, 5},     {15, 3},
                                              {30, 6},    {60, 4},    {120, 4},   {300, 5},    {600, 5},
                                              {900, 3},   {1800, 6},  {3600, 4},  {7200, 4},   {10800, 3},
                                              {21600, 6}, {43200, 6}, {86400, 4}, {172800, 4}, {604800, 7}}};
constexpr std::array<int, 5> frameSteps = {1, 2, 5, 10, 15}; // frames

Step stepOf(RulerScale const& scale) {
    double const least = scale.secondsPerPoint * scale.labelSpacing;
    double const frame = 1 / std::max(scale.framesPerSecond, 1.0);
    for (int const frames : frameSteps) {
        if (frames * frame >= least && frames * frame < 0.5) return {frames * frame, frames};
    }
    if (0.5 >= least) return {0.5, 5};
    for (auto const& step : wholeSteps) {
        if (step.seconds >= least) return step;
    }
    return {604800 * std::ceil(least / 604800), 7};
}

std::string labelOf(double time, Step const& step, double framesPerSecond) {
    if (step.seconds >= 1) return Timecode::format(time);
    // A frame begins at its time, though a sum of frames may round to just before it.
    return Timecode::format(time + 1e-6, Timecode::Fraction::frames, framesPerSecond);
}

}

std::vector<RulerTick> rulerTicks(TimeRange const& visible, RulerScale const& scale) {
    std::vector<RulerTick> ticks;
    if (!(scale.secondsPerPoint > 0) || !(visible.duration > 0)) return ticks;
    auto const step = stepOf(scale);
    double const small = step.seconds / step.parts;
    auto const first = static_cast<std::int64_t>(std::ceil(std::max(visible.start, 0.0) / small - 1e-9));
    for (auto n = first; static_cast<double>(n) * small <= visible.end(); ++n) {
        double const time = static_cast<double>(n) * small;
        ticks.push_back({time, n % step.parts == 0 ? labelOf(time, step, scale.framesPerSecond) : std::string()});
    }
    return ticks;
}

}
