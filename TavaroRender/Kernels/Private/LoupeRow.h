#pragma once

#include <cstdint>
#include <optional>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/Private/BackgroundRow.h>
#include <TavaroRender/Kernels/Private/ContentPlan.h>
#include <TavaroRender/Kernels/Private/Loupe.h>

namespace tavaro {

class CompositePixel;

/// The loupe of one frame, drawn over the finished canvas: the evenly magnified middle by the content
/// plan, the rim, what lies past the recording, and the glass by the vector unit.
class LoupeRows {
public:
    void prepare(CompositePixel const& pixel, int width, int height);

    /// Draws over the rows `yBegin` … `yEnd` − 1; `seen` is working memory.
    void draw(CompositePixel const& pixel, ContentScratch& scratch, Image& seen, MutableImageView canvas, int yBegin,
              int yEnd) const;

    /// Canvas pixels of a row, end excluded.
    struct Columns {
        int begin = 0;
        int end = 0;
    };

private:
    void seeRecording(LoupeScene const& scene, ContentScratch& scratch, Image& seen, int yBegin, int yEnd) const;
    void seeRest(LoupeScene const& scene, int y, int width, std::uint8_t* seen) const;
    Columns recordedColumns(CompositeUniforms const& uniforms, int y, int width) const;

    ContentPlan middle_;
    std::optional<BackgroundRows> background_;
};

}
