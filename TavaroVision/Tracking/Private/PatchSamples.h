#pragma once

#include <vector>

namespace tavaro {

class TextPatch;

/// A pixel of a patch at the edge of a letter.
struct PatchSample {
    int x = 0;
    int y = 0;
    int value = 0;
    int edge = 0; // how steep it is there
};

/// About a hundred of them: the steepest ones of each stretch of the patch; one of each stretch after the other, so
/// that the first few tell most.
std::vector<PatchSample> samplesOf(TextPatch const& patch);

}
