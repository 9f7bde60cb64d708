#pragma once

#include <TavaroVision/Reading/ReadText.h>
#include <TavaroVision/Tracking/Private/PatchSamples.h>

#include <functional>
#include <span>
#include <vector>

namespace tavaro {

class TextPatch;

/// Knows a text again that is in the same columns of a picture as before, however high: what scrolls back, and what
/// comes out from below something else. A part of it that is as wide as a few letters will do, and so will
/// the upper or lower half of all.
class ColumnSearch {
public:
    explicit ColumnSearch(TextPatch const& patch);

    /// Calls `look(y)` for each height of the patch's corner at which a part of it may be, with its left edge at x. Of
    /// each row of the picture `isNew` says whether to look at texts that begin there.
    void find(GrayView const& picture, int x, std::span<char const> isNew,
              std::function<void(int y)> const& look) const;

private:
    struct Part {
        std::vector<PatchSample> samples;
        int mostDifference = 0;
        int left = 0;
        int right = 0;

        bool isAt(std::uint8_t const* corner, std::ptrdiff_t stride) const;
    };

    int height_;
    std::vector<Part> parts_;
};

}
