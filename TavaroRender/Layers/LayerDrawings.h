#pragma once

#include <TavaroRender/Layers/LayerRasterizer.h>
#include <TavaroRender/Layers/LayerSpec.h>

namespace tavaro {

class TextFonts;

/// The drawing of each kind of layer. A layer with nothing to see has no texture. No body is larger than the canvas,
/// whatever the spec holds; a bitmap is larger than its body by its shadow.
DrawnLayer drawTitle(TextFonts& fonts, LayerSpec const& spec, LayerSpec::Title const& title);
DrawnLayer drawCallout(TextFonts& fonts, LayerSpec const& spec, LayerSpec::Callout const& callout);
DrawnLayer drawCommand(TextFonts& fonts, LayerSpec const& spec, LayerSpec::Command const& command);
DrawnLayer drawWatermark(TextFonts& fonts, LayerSpec const& spec, LayerSpec::Watermark const& watermark);
DrawnLayer drawKeycaps(TextFonts& fonts, LayerSpec const& spec, LayerSpec::Keycap const& keycap);
DrawnLayer drawCode(TextFonts& fonts, LayerSpec const& spec, LayerSpec::Code const& code);
DrawnLayer drawCaption(TextFonts& fonts, LayerSpec const& spec, LayerSpec::Caption const& caption);
/// The body's corner is where the arrow's tail is in the bitmap.
DrawnLayer drawArrow(LayerSpec const& spec, LayerSpec::Arrow const& arrow);
DrawnLayer drawBox(LayerSpec const& spec, LayerSpec::Box const& box);

/// Sides of the pieces that a larger box is put together from.
struct BoxPieces {
    int corner = 0; // a corner's piece, canvas pixels; reaches past the box's own corner by `margin`
    int margin = 0;
};
BoxPieces boxPieces(LayerSpec const& spec);

/// The sizes of a layer's canvas and letters, canvas pixels.
struct LayerScale {
    explicit LayerScale(LayerSpec const& spec);

    double width;
    double height;
    double unit; // a pixel of a canvas whose smaller side is 1080
    double em;   // size of the letters, kept between what can be seen and what fits
};

}
