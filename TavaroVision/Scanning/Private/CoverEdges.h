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

/// As far as antialiasing and a reader's inexact boxes ask for. A mask takes its colors from just outside of its
/// corners and of the middles of its sides, and would draw a stroke there into all of the cover: the edges are such
/// that there is ground, as far as that is near.
CoverEdges coverEdges(GrayView const& picture, PixelBox const& text, int letterHeight);

}
