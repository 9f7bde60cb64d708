#pragma once

#include <cstdint>

namespace tavaro {

/// All sound inside the system is stereo at this many samples a second; sample n sounds at n ÷ 48000 seconds.
inline constexpr int audioRate = 48'000;

/// Full scale is −1…1; what is louder is kept until it is written.
struct StereoSample {
    float left = 0;
    float right = 0;

    bool operator==(StereoSample const&) const = default;
};
static_assert(sizeof(StereoSample) == 2 * sizeof(float));

}
