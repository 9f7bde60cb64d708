#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include <TavaroPlatform/Queues/RowBands.h>
#include <TavaroRender/Kernels/Private/CompositePixel.h>
#include <TavaroRender/Kernels/Private/ContentPlan.h>
#include <TavaroRender/Kernels/Private/LoupeRow.h>
#include <TavaroRender/Kernels/Private/StillLayer.h>

namespace tavaro {

/// The `composite` kernel, fast: still parts are kept between frames, the recording is resampled by the vector unit,
/// and only the pixels at its edges and under the loupe are worked out one by one.
class FastComposite {
public:
    void draw(CompositeUniforms const& uniforms, ScreenTexture const& screen, ImageView background,
              MutableImageView canvas, RowBands& rows);
    void forget() { still_.forget(); }

private:
    /// Working memory of one band.
    struct Scratch {
        ContentScratch content;
        Image seen; // what the loupe shows of a block of rows
    };

    void drawRows(CompositePixel const& pixel, MutableImageView canvas, int begin, int end);
    void drawContent(CompositePixel const& pixel, ContentScratch& scratch, MutableImageView canvas, int begin, int end);
    void finishRow(MutableImageView canvas, int y) const;
    std::unique_ptr<Scratch> takeScratch();
    void giveBack(std::unique_ptr<Scratch> scratch);

    StillLayer still_;
    ContentPlan content_;
    LoupeRows loupe_;
    std::mutex mutex_;
    std::vector<std::unique_ptr<Scratch>> scratches_;
};

}
