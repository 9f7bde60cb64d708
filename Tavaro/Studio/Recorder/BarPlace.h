#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>

#include <optional>
#include <vector>

namespace tavaro {

/// Where the recorder's bar is out of the picture of a take.
struct BarRoom {
    std::vector<PixelRect> screens;      // of the desktop, the one where the bar would rather be first
    std::optional<PixelRect> filmed;     // what of the desktop is in the picture; none: nothing of the bar can be
    PixelRect bar;                       // as large as it is
    std::optional<PixelPoint> kept = {}; // where its user put it
};

/// At the place that its user gave it, else at the bottom of a screen; but beside what is filmed. None where it would
/// be in the picture everywhere.
std::optional<PixelPoint> barPlace(BarRoom const& room);

}
