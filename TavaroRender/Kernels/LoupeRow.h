#pragma once

#include <cstdint>
#include <vector>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/ContentPlan.h>
#include <TavaroRender/Kernels/Loupe.h>

namespace tavaro {

class CompositePixel;

/// The loupe of one frame, drawn a row at a time over the finished canvas: the evenly magnified middle by the content
/// plan, the rim and the glass by the vector unit, and what the lens shows past the recording by the pixel formula.
class LoupeRows {
public:
    /// Whether rows can be drawn this way at all; `prepare` works out the rest.
    void prepare(CompositePixel const& pixel, int width, int height);

    /// Draws over one row; `seen` is working memory.
    void draw(CompositePixel const& pixel, ContentScratch& scratch, std::vector<std::uint8_t>& seen,
              MutableImageView canvas, int y) const;

private:
    void seeMiddle(LoupeScene const& scene, ContentScratch& scratch, int y, int begin, int end,
                   std::uint8_t* seen) const;

    ContentPlan middle_;
};

}
