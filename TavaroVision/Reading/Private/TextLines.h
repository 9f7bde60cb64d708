#pragma once

#include <TavaroVision/Reading/ReadText.h>

#include <vector>

namespace tavaro {

/// A place of a picture that looks like a line of text.
struct TextLine {
    PixelBox box;         // of its ink, without a margin
    int letterHeight = 0; // pixels; of its capitals, about
    bool isLightOnDark = false;

    bool operator==(TextLine const&) const = default;
};

/// The lines of text of a part of a picture, from the top, those of one height from the left. Words whose gap is more
/// than about two letters' height are of different lines. Letters from 7 to 60 pixels high are found, also over each
/// other's ends; what is plainly no text (rules, icons, photographs) is left out. Costs by the part's size.
std::vector<TextLine> textLines(GrayView const& picture, PixelBox const& within);

}
