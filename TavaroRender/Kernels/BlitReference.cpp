#include <TavaroRender/Kernels/BlitUniforms.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>
#include <TavaroRender/Kernels/Private/Reference.h>
#include <TavaroRender/Kernels/Private/Sampling.h>

namespace tavaro {

namespace {

bool isInUnit(float v) { return v >= 0 && v <= 1; }

Float4 withLayer(BlitUniforms const& u, ImageView layer, Float4 pixel, Float2 point) {
    auto const local = (point - u.origin) / u.size;
    if (!isInUnit(local.x) || !isInUnit(local.y)) return pixel;
    auto const sample = samplePixel(layer, local);
    auto const alpha = sample.w * u.opacity;
    if (!(alpha > 0.0001f)) return pixel;
    auto const color = sample.w > 0.0001f ? rgb(sample) * (1.0f / sample.w) : Float3{};
    return laidOver(pixel, color, alpha);
}

}

void blitLayerReference(BlitUniforms const& u, ImageView layer, MutableImageView canvas, int rowBegin, int rowEnd) {
    if (layer.isEmpty()) return;
    for (int y = rowBegin; y < rowEnd; ++y) {
        auto* p = canvas.row(y);
        for (int x = 0; x < canvas.width; ++x, p += 4)
            storePixel(p, withLayer(u, layer, loadPixel(p), pixelCenter(x, y)));
    }
}

}
