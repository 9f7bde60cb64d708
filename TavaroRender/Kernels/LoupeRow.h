#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/BackgroundRow.h>
#include <TavaroRender/Kernels/ContentPlan.h>
#include <TavaroRender/Kernels/Loupe.h>

namespace tavaro {

class CompositePixel;

/// The loupe of one frame, drawn a row at a time over the finished canvas: the evenly magnified middle by the content
/// plan, the rim, what lies past the recording, and the glass by the vector unit.
class LoupeRows {
public:
    void prepare(CompositePixel const& pixel, int width, int height);

    /// Draws over one row; `seen` is working memory.
    void draw(CompositePixel const& pixel, ContentScratch& scratch, std::vector<std::uint8_t>& seen,
              MutableImageView canvas, int y) const;

private:
    void seeMiddle(LoupeScene const& scene, ContentScratch& scratch, int y, int begin, int end,
                   std::uint8_t* seen) const;

    ContentPlan middle_;
    std::optional<BackgroundRows> background_;
};

}
