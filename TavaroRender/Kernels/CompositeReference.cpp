#include <TavaroRender/Kernels/Private/Background.h>
#include <TavaroRender/Kernels/Private/CompositePixel.h>
#include <TavaroRender/Kernels/Private/Loupe.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>
#include <TavaroRender/Kernels/Private/Reference.h>

namespace tavaro {

CompositePixel::CompositePixel(CompositeUniforms const& uniforms, ScreenTexture const& screen, ImageView background)
    : uniforms_(uniforms)
    , geometry_(uniforms)
    , sampler_(uniforms, screen)
    , background_(background) {
    geometry_.isEmpty = geometry_.isEmpty || sampler_.isEmpty();
    showsScreen_ = !geometry_.isEmpty;
}

Float4 CompositePixel::behindScreen(Float2 point) const {
    auto const pixel = backgroundPixel(uniforms_, background_, point);
    if (!showsScreen_ || !shadowIsVisible(uniforms_)) return pixel;
    return laidOver(pixel, rgb(uniforms_.shadowColor), shadowStrength(uniforms_, geometry_, point));
}

Float4 CompositePixel::withoutLoupe(Float2 point) const {
    auto const pixel = behindScreen(point);
    if (!showsScreen_) return pixel;
    auto const layer = screenLayer(uniforms_, geometry_, sampler_, point);
    return laidOver(pixel, rgb(layer), layer.w);
}

Float4 CompositePixel::operator()(Float2 point) const {
    auto const pixel = withoutLoupe(point);
    if (!loupeIsVisible(uniforms_)) return pixel;
    return withLoupe({uniforms_, geometry_, sampler_, background_}, pixel, point);
}

void compositeReference(CompositeUniforms const& uniforms, ScreenTexture const& screen, ImageView background,
                        MutableImageView canvas, int rowBegin, int rowEnd) {
    CompositePixel const pixel(uniforms, screen, background);
    for (int y = rowBegin; y < rowEnd; ++y) {
        auto* out = canvas.row(y);
        for (int x = 0; x < canvas.width; ++x, out += 4) storePixel(out, pixel(pixelCenter(x, y)));
    }
}

}
