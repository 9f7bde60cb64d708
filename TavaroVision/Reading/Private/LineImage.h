#pragma once

#include <TavaroVision/Reading/ReadText.h>

#include <cstdint>
#include <vector>

namespace tavaro {

struct TextLine;

/// A line of text as it is read best: dark on light, of full contrast, with a margin, small letters enlarged.
struct LineImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels; // row by row, no gaps
    int letterHeight = 0;             // of the line's capitals here, about
    PixelBox line;                    // the line's ink in the picture that it is of
    PixelBox area;                    // what of that picture is shown: the line with its margin
    bool operator==(LineImage const&) const = default;
};

/// What of the picture is light and what is dark is looked at anew along the line, since parts of it may be selected.
LineImage lineImage(GrayView const& picture, TextLine const& line);

/// The box in the picture of one in the line's image.
PixelBox inPicture(LineImage const& image, PixelBox const& box);

}
