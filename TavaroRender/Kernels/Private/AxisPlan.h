#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <TavaroRender/Kernels/Private/Sampling.h>

namespace tavaro {

/// Where a sample lies along one axis of a picture: at `first`, and on the way to the texel after it.
struct AxisPlace {
    int first = 0;
    float between = 0;
};

/// The place that bilinear sampling at a normalised coordinate reads. The last texel is reached as the whole of the way
/// from the one before, so two texels can always be read together where there are two.
inline AxisPlace axisPlace(float normalised, int size) {
    auto const position = std::clamp(texelPosition(normalised, size), 0.0f, static_cast<float>(size - 1));
    auto const first = std::min(static_cast<int>(position), std::max(size - 2, 0));
    return {first, position - static_cast<float>(first)};
}

/// The places of neighbouring columns of the canvas, which are the same in every row.
struct AxisPlan {
    std::vector<std::int32_t> first;
    std::vector<float> between;

    /// `normalised(i)` is the coordinate of column `i`. Some more columns than `count` can be read.
    template<class Normalised> void fill(int count, int size, Normalised&& normalised) {
        constexpr int longestVector = 64;
        auto const all = static_cast<std::size_t>(count + longestVector);
        first.assign(all, 0);
        between.assign(all, 0);
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            auto const place = axisPlace(normalised(static_cast<int>(i)), size);
            first[i] = place.first;
            between[i] = place.between;
        }
    }
};

}
