#pragma once

#include <cstdint>
#include <vector>

#include <TavaroCore/Values/Geometry.h>

namespace tavaro {

/// Where everything of a contact sheet lies, pixels.
struct SheetLayout {
    int columns = 1;
    int rows = 1;
    Size2 picture; // even sides, in the shape of the canvas and never larger
    Size2 sheet;
    std::int64_t margin = 0; // around everything
    std::int64_t gap = 0;    // between columns
    double titleSize = 0;    // of the letters, an em
    double labelSize = 0;
    std::int64_t header = 0; // height of the title's line with the space below it
    std::int64_t label = 0;  // height of a row's labels with the space below them

    std::int64_t pictureX(int index) const { return margin + index % columns * (picture.width + gap); }
    std::int64_t pictureY(int index) const { return margin + header + index / columns * (picture.height + label); }
};

/// A grid in about the shape of the canvas with few places left over, `width` pixels wide, or wider where pictures
/// would be too small to see and narrower where they are no larger. `count` is at least 1.
SheetLayout sheetLayout(int count, Size2 canvas, std::int64_t width);

/// The middles of `count` equal parts of a film, each on one of its frames.
std::vector<double> sheetTimes(int count, double duration, std::int64_t fps);

}
