#pragma once

#include <TavaroVision/Reading/ReadText.h>

#include <vector>

namespace tavaro {

class BitRows;

/// Where pixels differ from those beside them as letters do from what they are on. The result begins at the top
/// left of `within`, which is not empty and inside of the picture; right of it, it has room to smear into.
BitRows edgesOf(GrayView const& picture, PixelBox const& within);

/// Pieces of text: letters and words, each of one line as long as no letters touch those above. In no order.
std::vector<PixelBox> textPieces(BitRows const& edges);

}
