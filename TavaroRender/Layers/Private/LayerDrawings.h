#pragma once

#include <TavaroRender/Layers/Private/LayerRasterizer.h>
#include <TavaroRender/Layers/Private/LayerSpec.h>

namespace tavaro {

class TextFonts;

/// The drawing of each kind of layer. A layer with nothing to see has no texture. No body is larger than the canvas,
/// whatever the look holds; a bitmap is larger than its body by its shadow.
DrawnLayer drawTitle(TextFonts& fonts, LayerSpec const& look, LayerSpec::Title const& title);
DrawnLayer drawCallout(TextFonts& fonts, LayerSpec const& look, LayerSpec::Callout const& callout);
DrawnLayer drawCommand(TextFonts& fonts, LayerSpec const& look, LayerSpec::Command const& command);
DrawnLayer drawWatermark(TextFonts& fonts, LayerSpec const& look, LayerSpec::Watermark const& watermark);
DrawnLayer drawKeycaps(TextFonts& fonts, LayerSpec const& look, LayerSpec::Keycap const& keycap);
DrawnLayer drawCode(TextFonts& fonts, LayerSpec const& look, LayerSpec::Code const& code);
DrawnLayer drawCaption(TextFonts& fonts, LayerSpec const& look, LayerSpec::Caption const& caption);
/// The body's corner is where the arrow's tail is in the bitmap.
DrawnLayer drawArrow(LayerSpec const& look, LayerSpec::Arrow const& arrow);
DrawnLayer drawBox(LayerSpec const& look, LayerSpec::Box const& box);

/// Sides of the pieces that a larger box is put together from.
struct BoxPieces {
    int corner = 0; // a corner's piece, canvas pixels; reaches past the box's own corner by `margin`
    int margin = 0;
};
BoxPieces boxPieces(LayerSpec const& look);

/// The sizes of a layer's canvas and letters, canvas pixels.
struct LayerScale {
    explicit LayerScale(LayerSpec const& look);

    double width;
    double height;
    double unit; // a pixel of a canvas whose smaller side is 1080
    double em;   // size of the letters, kept between what can be seen and what fits
};

}
