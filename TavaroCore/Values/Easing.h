#pragma once

#include <array>
#include <string_view>

namespace tavaro {

/// A timing curve from 0 to 1. "spring" and "anticipate" leave 0…1 on the way.
enum class Easing { linear, easeIn, easeOut, smooth, spring, anticipate };

constexpr std::array<std::string_view, 6> namesOf(Easing) {
    return {"linear", "easeIn", "easeOut", "smooth", "spring", "anticipate"};
}

std::string_view displayName(Easing easing);

/// The curve at t, which is clamped to 0…1 first.
double apply(Easing easing, double t);

}
