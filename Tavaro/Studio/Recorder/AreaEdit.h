#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>

namespace tavaro {

inline constexpr int shortestAreaSide = 32; // pixels

/// What of an area is dragged.
enum class AreaGrip { inside, left, right, top, bottom, topLeft, topRight, bottomLeft, bottomRight };

/// An area that is dragged on a display, in pixels of the display from its top-left corner. Whatever is done to it, it
/// stays on the display, keeps its shape to a pixel and is no smaller than `shortestAreaSide`.
class AreaEdit {
public:
    /// `display` is the display's size; its origin does not count.
    AreaEdit(PixelRect const& display, AreaShape shape);

    /// The nearest area that is allowed; what does not fit loses size rather than its place.
    PixelRect fitted(PixelRect const& wanted) const;
    /// `start` as it is when its grip has been dragged by so many pixels.
    PixelRect dragged(PixelRect const& start, AreaGrip grip, PixelPoint by) const;
    /// Drawn anew from one corner to the opposite one.
    PixelRect drawn(PixelPoint from, PixelPoint to) const;
    /// With another width, or height: the other side follows the shape.
    PixelRect withWidth(PixelRect const& area, int width) const;
    PixelRect withHeight(PixelRect const& area, int height) const;
    /// In the middle, over about half of each side.
    PixelRect suggested() const;

private:
    struct Sides {
        double width = 0;
        double height = 0;
    };
    Sides held(Sides wanted, Sides room) const;
    PixelRect grown(PixelPoint anchor, PixelPoint away, Sides wanted) const;

    int const width_;
    int const height_;
    double const ratio_; // width ÷ height; 0: free
};

}
