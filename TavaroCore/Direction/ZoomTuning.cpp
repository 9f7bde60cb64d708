#include <TavaroCore/Direction/ZoomTuning.h>

#include <array>
#include <cstddef>

namespace tavaro {

ZoomTuning const& zoomTuning(DemoMode mode) {
    static constexpr std::array<ZoomTuning, 6> table{{
        // max  min  hold  merge  distance  threshold  gap
        {1.75, 1.25, 1.5, 2.0, 0.28, 0.35, 1.0}, // website
        {1.9, 1.3, 1.4, 1.8, 0.26, 0.33, 0.9},   // desktopApp
        {2.2, 1.4, 1.4, 1.6, 0.22, 0.3, 0.8},    // mobileApp
        {1.45, 1.15, 1.5, 2.4, 0.34, 0.42, 1.2}, // dashboard
        {2.4, 1.5, 1.6, 2.0, 0.3, 0.25, 0.7},    // terminal
        {1.0, 1.0, 0.0, 0.0, 0.0, 2.0, 99.0},    // plain: nothing is important enough
    }};
    static_assert(table.size() == namesOf(DemoMode{}).size());
    return table[static_cast<std::size_t>(mode)];
}

}
