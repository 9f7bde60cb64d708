#pragma once

#include <TavaroMedia/Audio/StereoSample.h>

#include <span>

namespace tavaro {

/// How many samples before and after a place `fractionalSample` looks at.
inline constexpr int fractionalReach = 16;

/// The sound between its samples: a windowed sinc, exact to −90 dB below 18 kHz. `place` is at least `fractionalReach`,
/// and as far from the end. Any thread.
StereoSample fractionalSample(std::span<StereoSample const> samples, double place);

}
