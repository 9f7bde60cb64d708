#pragma once

#include <cstdint>
#include <vector>

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/ContentPlan.h>

namespace tavaro {

class CompositePixel;

/// A pixel that shows the recording only in part: at rounded corners, borders, bands and islands. It becomes
/// recording × `content` + pixel behind × `behind` + `added` (0…255), at least `alpha` opaque.
struct MixedPixel {
    int x = 0;
    float content = 0;
    float behind = 0;
    Float3 added;
    std::uint8_t alpha = 0;
};

/// Everything of a frame that does not come from the recording (background, shadow, device frame), drawn once and kept
/// while the picture's geometry stays; and which pixels of each row the recording covers.
class StillLayer {
public:
    struct Row {
        int contentBegin = 0; // pixels that show the recording, wholly or in part
        int contentEnd = 0;
        std::vector<MixedPixel> mixed;
    };

    /// Draws the layer where it does not show this frame already. `inBands` runs a function over bands of rows.
    void prepare(CompositePixel const& pixel, int width, int height,
                 FunctionRef<void(FunctionRef<void(int, int)>)> inBands);
    void forget() { isDrawn_ = false; }

    ImageView pixels() const { return layer_.view(); }
    Row const& row(int y) const { return rows_[static_cast<std::size_t>(y)]; }
    /// The smallest area that holds every pixel of the recording.
    CanvasArea contentArea() const { return contentArea_; }

private:
    void drawRow(CompositePixel const& pixel, int y);
    void findContentArea();

    CompositeUniforms key_;
    std::uint8_t const* keyBackground_ = nullptr;
    int keyBackgroundWidth_ = 0;
    int keyBackgroundHeight_ = 0;
    bool keyShowsScreen_ = false;
    bool isDrawn_ = false;
    Image layer_;
    std::vector<Row> rows_;
    CanvasArea contentArea_;
};

}
