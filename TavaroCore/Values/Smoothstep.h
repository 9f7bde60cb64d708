#pragma once

#include <algorithm>

namespace tavaro {

/// 0 up to `from`, 1 from `to` on, and between them a step that begins and ends gently.
inline double smoothstep(double from, double to, double x) {
    double const t = std::clamp((x - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

}
