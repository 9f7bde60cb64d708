#pragma once

#include <TavaroVision/Reading/ReadText.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace tavaro {

class TextPatch;

/// By how much something moved from a picture to the next, in pixels.
struct Shift {
    int dx = 0;
    int dy = 0;

    bool isNone() const { return dx == 0 && dy == 0; }
    bool operator==(Shift const&) const = default;
};

/// Where a patch went, found by a hundred of its pixels at the edges of letters: up and down as far as the picture
/// goes, as pages scroll, to the left and right likewise, as workspaces slide, and to all sides as far as windows are
/// dragged from one picture to the next. Exact to the pixel. None where it is nowhere there.
std::optional<Shift> shiftOf(TextPatch const& patch, int x, int y, GrayView const& picture);

}
