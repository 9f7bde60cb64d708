#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroRender/Layers/Private/RasterLayer.h>

namespace tavaro {

struct DemoProject;
struct FrameState;
struct LayerSpec;

/// A layer's bitmap, and where its shape lies in it: shadows and outlines reach past the shape.
struct DrawnLayer {
    std::shared_ptr<Image const> texture; // RGBA, premultiplied; null when there is nothing to draw
    CanvasRect body;                      // pixels of the texture
};

/// Draws the texts and graphics of frames as bitmaps, each once as long as it looks the same. Fonts are looked for when
/// the first text is drawn, so a project without any costs nothing. One thread at a time.
class LayerRasterizer {
public:
    /// Keeps bitmaps of that many bytes, the least recently used go first; those in use live on with their layers.
    explicit LayerRasterizer(std::size_t cacheBytes = std::size_t{64} << 20);
    LayerRasterizer(LayerRasterizer&&) noexcept;
    LayerRasterizer& operator=(LayerRasterizer&&) noexcept;
    ~LayerRasterizer();

    /// The layers of the frame in the order they are drawn: boxes and arrows, keys, callouts, commands and code,
    /// titles, the caption, the watermark; of a card's frame only the card's text. Blur, highlight and mask overlays
    /// are not layers. Throws `LayerError` when there is no font or no memory to draw with.
    std::vector<RasterLayer> layers(FrameState const& state, DemoProject const& project);

    /// The same with bitmaps from `draw`; those without a texture are left out.
    using Draw = FunctionRef<DrawnLayer(LayerSpec const& look)>;
    std::vector<RasterLayer> layers(FrameState const& state, DemoProject const& project, Draw draw);

    /// One layer's bitmap, from the cache if it is there.
    DrawnLayer drawn(LayerSpec const& look);

    /// Bitmaps drawn so far, and bytes of those kept.
    std::int64_t rasterizations() const;
    std::size_t cachedBytes() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
