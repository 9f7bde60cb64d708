#pragma once

#include <optional>

#include <TavaroRender/Layers/Private/Drawing.h>
#include <TavaroRender/Layers/Private/LayerDrawings.h>
#include <TavaroRender/Layers/Private/TextBlock.h>

namespace tavaro {

/// The sheet that a text stands on.
struct Panel {
    double radius = 0;
    RGBAColor color;
    SoftShadow shadow;
    double hairline = 0; // width of the light edge that sets a dark sheet off a dark picture
};

/// A drawing with a body in its middle and room for shadows around it. Lengths are whole pixels, so a layer at rest
/// lies on the canvas's pixels and stays sharp. A body that the canvas cannot hold is drawn smaller as a whole.
class LayerDrawing {
public:
    LayerDrawing(LayerScale const& scale, double bodyWidth, double bodyHeight, double margin);

    Drawing& drawing() { return drawing_; }
    cairo_t* cr() { return drawing_.cr(); }
    CanvasRect const& body() const { return body_; }
    void drawPanel(Panel const& panel);
    DrawnLayer finish();

private:
    CanvasRect body_;
    Drawing drawing_;
};

/// What keeps a thing of that colour visible on any picture: black round what is light, white round what is dark.
RGBAColor shadeBehind(RGBAColor const& color);

/// A dark sheet under a light text and a light one under a dark text, or the colour asked for.
RGBAColor panelColor(LayerSpec const& look, double alpha);
Panel panelOf(LayerSpec const& look, double em, RGBAColor const& color);

/// Softly shades the picture where a bare text of that colour will be, so that the picture's own text goes under. As a
/// panel, it is there for all of a text that is still being typed.
void paintVeil(Drawing& drawing, TextBlock const& text, CanvasPoint at, RGBAColor const& color);
/// Paints a text that stands on the bare picture, over a soft shadow that keeps it readable on any.
void paintBare(Drawing& drawing, TextBlock const& text, CanvasPoint at, RGBAColor const& color,
               TextBlock::PaintOf paintOf);
/// How far veil and shadow reach past the text.
double bareReach(double em);

/// The bytes of the text that are shown while it is typed.
std::size_t shownBytes(LayerSpec const& look, std::string const& text);

}
