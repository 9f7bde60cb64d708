#pragma once

#include <cstdint>
#include <vector>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroPlatform/Queues/RowBands.h>
#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/Private/BackgroundRow.h>
#include <TavaroRender/Kernels/Private/ContentPlan.h>

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
        int plainBegin = 0; // the run in the middle of those that needs nothing of the layer
        int plainEnd = 0;
    };

    /// Draws the layer where it does not show this frame already; of an animated background under the same geometry
    /// only that is drawn anew.
    void prepare(CompositePixel const& pixel, int width, int height, RowBands& rows);
    void forget() { isDrawn_ = false; }

    ImageView pixels() const { return layer_.view(); }
    Row const& row(int y) const { return rows_[static_cast<std::size_t>(y)]; }
    /// The smallest area that holds every pixel of the recording.
    CanvasArea contentArea() const { return contentArea_; }

private:
    void planRow(CompositePixel const& pixel, Row& row, int y) const;
    void fillVeil(CompositePixel const& pixel, Row const& row, int y, bool dithers, VeilPlanes& veil) const;
    void paintRow(BackgroundRows const& background, Row const& row, int y, VeilPlanes const& veil, ColorPlanes& colors);
    void findContentArea();

    struct Key {
        CompositeUniforms uniforms; // those that the layer depends on
        std::uint8_t const* background = nullptr;
        int backgroundWidth = 0;
        int backgroundHeight = 0;
        int width = 0;
        int height = 0;
        bool showsScreen = false;

        bool operator==(Key const&) const = default;
    };
    static Key keyOf(CompositePixel const& pixel, int width, int height);

    Key key_;
    bool isDrawn_ = false;
    float time_ = 0; // of the animated background
    Image layer_;
    std::vector<Row> rows_;
    std::vector<VeilPlanes> veils_; // one a row, kept while the background is animated
    CanvasArea contentArea_;
};

}
