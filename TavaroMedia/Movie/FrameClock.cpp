#include <TavaroMedia/Movie/Private/FrameClock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace tavaro {

namespace {

// Finer clocks place a frame well within its time; the coarser ones of GIFs and of files that count frames are the
// times that are meant.
constexpr double finestCoarseTick = 0.0002;
constexpr double coarsestTick = 0.002;

// The first frame's time is rounded as well as each other one's: together they are off by a tick at most.
constexpr double largestError = 1.001; // ticks
// With less room between two frames than this, nearly every time would be on the beat.
constexpr double leastInterval = 4; // ticks
// Frames may be missing; but of a rate twice as fast as the movie's every other one would be.
constexpr double leastUnbroken = 0.9;
// So few frames may be on the beat of a rate that nobody claims by chance.
constexpr std::size_t fewestFrames = 12;

constexpr std::array usualRates{
    24.0, 25.0, 30.0, 50.0,  60.0,  24000 / 1001.0, 30000 / 1001.0, 60000 / 1001.0,  10.0,  12.0, 15.0, 20.0, 48.0,
    72.0, 75.0, 90.0, 100.0, 120.0, 12.5,           48000 / 1001.0, 120000 / 1001.0, 144.0, 240.0};

/// What a movie's rate may be, the likeliest first. Containers tell a rounded rate or the duration of a frame: nearly
/// the usual rate that is meant, whose nearest neighbour differs by a thousandth.
std::vector<double> likelyRates(std::optional<AVRational> told, std::size_t frames) {
    std::vector<double> rates;
    if (told) {
        auto const rate = av_q2d(*told);
        std::ranges::copy_if(usualRates, std::back_inserter(rates),
                             [&](double usual) { return std::abs(rate / usual - 1) < 2e-4; });
        rates.push_back(rate);
    }
    if (frames >= fewestFrames) std::ranges::copy(usualRates, std::back_inserter(rates));
    return rates;
}

}

std::optional<std::int64_t> FrameTimes::end() const {
    if (!last.empty()) return last.back();
    if (!first.empty()) return first.back();
    return std::nullopt;
}

struct FrameClock::Beat {
    double number = 0; // of the nearest one, from the first frame
    double error = 0;  // ticks
};

FrameClock::FrameClock(AVRational timeBase, std::int64_t origin) : tick_(av_q2d(timeBase)), origin_(origin) {}

bool FrameClock::isCoarse() const { return tick_ > finestCoarseTick && tick_ <= coarsestTick; }

FrameClock::Beat FrameClock::beat(std::int64_t ticks, double rate) const {
    auto const passed = static_cast<double>(ticks - origin_);
    auto const number = std::round(passed * tick_ * rate);
    return {number, std::abs(passed - number / (tick_ * rate))};
}

bool FrameClock::areOnBeat(std::vector<std::int64_t> const& times, double rate) const {
    std::size_t unbroken = 0;
    for (std::size_t i = 0; i < times.size(); ++i) {
        auto const [number, error] = beat(times[i], rate);
        if (error > largestError) return false;
        if (i > 0 && number - beat(times[i - 1], rate).number == 1) ++unbroken;
    }
    return times.size() < 2 || static_cast<double>(unbroken) >= leastUnbroken * static_cast<double>(times.size() - 1);
}

bool FrameClock::isSteady(FrameTimes const& times, double rate) const {
    return 1 / (rate * tick_) >= leastInterval && areOnBeat(times.first, rate) && areOnBeat(times.last, rate);
}

void FrameClock::keepTo(FrameTimes const& times, std::optional<AVRational> told) {
    if (!isCoarse() || times.first.size() < 2) return;
    auto const likely = likelyRates(told, times.first.size());
    auto const found = std::ranges::find_if(likely, [&](double rate) { return isSteady(times, rate); });
    if (found != likely.end()) rate_ = *found;
}

double FrameClock::seconds(std::int64_t ticks) const {
    if (rate_) {
        auto const [number, error] = beat(ticks, *rate_);
        if (error <= largestError) return number / *rate_;
    }
    return static_cast<double>(ticks - origin_) * tick_;
}

double FrameClock::rounding() const {
    auto const isExact = rate_ || tick_ > coarsestTick;
    return (isExact ? 0 : tick_ / 2) + 1e-6;
}

}
