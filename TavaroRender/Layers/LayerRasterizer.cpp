#include <TavaroRender/Layers/Private/LayerRasterizer.h>

#include <optional>

#include <TavaroRender/Layers/Private/LayerCache.h>
#include <TavaroRender/Layers/Private/LayerDrawings.h>
#include <TavaroRender/Layers/Private/LayerList.h>
#include <TavaroRender/Layers/Private/TextFonts.h>

namespace tavaro {

struct LayerRasterizer::State {
    explicit State(std::size_t cacheBytes) : cache(cacheBytes) {}

    LayerCache cache;
    std::optional<TextFonts> fonts; // found when the first text is drawn
    std::int64_t rasterizations = 0;

    TextFonts& ensureFonts() { return fonts ? *fonts : fonts.emplace(); }

    DrawnLayer draw(LayerSpec const& look) {
        struct Draw {
            State& state;
            LayerSpec const& look;

            DrawnLayer operator()(LayerSpec::Title const& it) { return drawTitle(state.ensureFonts(), look, it); }
            DrawnLayer operator()(LayerSpec::Callout const& it) { return drawCallout(state.ensureFonts(), look, it); }
            DrawnLayer operator()(LayerSpec::Keycap const& it) { return drawKeycaps(state.ensureFonts(), look, it); }
            DrawnLayer operator()(LayerSpec::Command const& it) { return drawCommand(state.ensureFonts(), look, it); }
            DrawnLayer operator()(LayerSpec::Code const& it) { return drawCode(state.ensureFonts(), look, it); }
            DrawnLayer operator()(LayerSpec::Caption const& it) { return drawCaption(state.ensureFonts(), look, it); }
            DrawnLayer operator()(LayerSpec::Arrow const& it) { return drawArrow(look, it); }
            DrawnLayer operator()(LayerSpec::Box const& it) { return drawBox(look, it); }
            DrawnLayer operator()(LayerSpec::Watermark const& it) {
                return drawWatermark(state.ensureFonts(), look, it);
            }
        };
        ++rasterizations;
        return std::visit(Draw{*this, look}, look.kind);
    }
};

LayerRasterizer::LayerRasterizer(std::size_t cacheBytes) : state_(std::make_unique<State>(cacheBytes)) {}
LayerRasterizer::LayerRasterizer(LayerRasterizer&&) noexcept = default;
LayerRasterizer& LayerRasterizer::operator=(LayerRasterizer&&) noexcept = default;
LayerRasterizer::~LayerRasterizer() = default;

DrawnLayer LayerRasterizer::drawn(LayerSpec const& look) {
    auto key = look.cacheKey();
    if (auto const* kept = state_->cache.find(key)) return *kept;
    auto layer = state_->draw(look);
    state_->cache.insert(std::move(key), layer);
    return layer;
}

std::vector<RasterLayer> LayerRasterizer::layers(FrameState const& state, DemoProject const& project) {
    auto const draw = [this](LayerSpec const& look) { return drawn(look); };
    return layers(state, project, draw);
}

std::vector<RasterLayer> LayerRasterizer::layers(FrameState const& state, DemoProject const& project, Draw draw) {
    std::vector<RasterLayer> layers;
    for (auto const& layer : placedLayers(state, project)) {
        auto const bitmap = draw(layer.look);
        if (!bitmap.texture) continue;
        auto const rect = placed(layer, bitmap.texture->width(), bitmap.texture->height(), bitmap.body);
        layers.push_back({bitmap.texture, rect, layer.opacity});
    }
    return layers;
}

std::int64_t LayerRasterizer::rasterizations() const { return state_->rasterizations; }

std::size_t LayerRasterizer::cachedBytes() const { return state_->cache.bytes(); }

}
