#include <TavaroCore/Values/Timecode.h>

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace tavaro::Timecode {

namespace {

constexpr double gridSlack = 0.000001; // keeps a time that stands for a grid point from falling to the one before

std::string clockText(double whole) {
    // Beyond this the digits mean nothing and a 64-bit count would overflow.
    auto const w = static_cast<std::int64_t>(std::min(whole, 1e15));
    if (w < 3600) return fmt::format("{}:{:02}", w / 60, w % 60);
    return fmt::format("{}:{:02}:{:02}", w / 3600, w / 60 % 60, w % 60);
}

}

std::string format(double seconds, Fraction fraction, double fps) {
    if (!std::isfinite(seconds) || seconds < 0) return "0:00";
    double const whole = std::trunc(seconds);
    double const rest = seconds - whole;
    auto const text = clockText(whole);
    switch (fraction) {
    case Fraction::none: return text;
    case Fraction::hundredths:
        return text + fmt::format(".{:02}", std::min(static_cast<int>(std::floor(rest * 100 + gridSlack)), 99));
    case Fraction::frames: return text + fmt::format(".{:02}", static_cast<int>(rest * std::clamp(fps, 0.0, 1e6)));
    }
    return text;
}

double stepped(double from, std::int64_t frames, double fps, double duration) {
    double const f = std::max(fps, 1.0);
    double const target = std::floor(from * f + gridSlack) + static_cast<double>(frames);
    double const last = std::floor(std::max(duration, 0.0) * f - gridSlack);
    return std::max(std::min(target, last), 0.0) / f;
}

}
