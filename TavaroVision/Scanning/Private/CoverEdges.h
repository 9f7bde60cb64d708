#pragma once

#include <TavaroVision/Reading/ReadText.h>

namespace tavaro {

/// How far a cover reaches beyond its text, in pixels.
struct CoverEdges {
    int left = 0;
    int right = 0;
    int above = 0;
    int below = 0;

    PixelBox around(PixelBox const& text) const {
        return {text.x - left, text.y - above, text.width + left + right, text.height + above + below};
    }
};

/// As far as antialiasing and a reader's inexact boxes ask for. They end where there is ground, not a
/// stroke of the next letter, in the middle of the sides: that is where a mask takes its colors from, and it would draw
/// the stroke into the cover.
CoverEdges coverEdges(GrayView const& picture, PixelBox const& text, int letterHeight);

}
