#pragma once

#include <initializer_list>
#include <memory>

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroCore/Values/RGBAColor.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Composition/Private/CanvasGeometry.h>
#include <TavaroRender/Layers/Private/TextHandles.h>

namespace tavaro {

/// A soft shadow: how far it spreads and falls, pixels.
struct SoftShadow {
    double spread = 0; // about twice the deviation of the blur
    double fall = 0;   // downward
    RGBAColor color = {0, 0, 0, 0.4};

    /// How far it reaches past its shape on any side.
    double reach() const { return spread * 1.5 + fall; }
};

/// A transparent bitmap to draw on.
class Drawing {
public:
    /// What is drawn in `width` × `height` units is `scale` pixels a unit. Throws `LayerError` when there is no memory
    /// for it.
    Drawing(double width, double height, double scale = 1);

    cairo_t* cr() const { return context_.get(); }
    int width() const { return width_; }
    int height() const { return height_; }
    double scale() const { return scale_; }

    using Shape = FunctionRef<void(cairo_t*)>;
    /// Draws the shadows, in units, of what `shape` draws; of that only the alpha counts.
    void shadow(std::initializer_list<SoftShadow> shadows, Shape shape);
    /// Draws the shape in that colour over its shadow.
    void fillOverShadow(SoftShadow const& shadow, RGBAColor const& color, Shape shape);

    /// The bitmap, RGBA premultiplied. Ends the drawing.
    std::shared_ptr<Image const> finish();

private:
    CairoSurface mask() const;
    CairoSurface maskOf(Shape shape) const;
    void blur(cairo_surface_t* mask, SoftShadow const& shadow) const;
    void paint(cairo_surface_t* mask, RGBAColor const& color, double fall);

    int width_;
    int height_;
    double scale_;
    CairoSurface surface_;
    CairoContext context_;
};

void setColor(cairo_t* cr, RGBAColor const& color);
/// Adds a rectangle with round corners to the path; the radius is at most half the smaller side.
void addRounded(cairo_t* cr, CanvasRect const& rect, double radius);
void fillRounded(cairo_t* cr, CanvasRect const& rect, double radius, RGBAColor const& color);
/// A line of that width along the inside of the edge.
void strokeRounded(cairo_t* cr, CanvasRect const& rect, double radius, double width, RGBAColor const& color);

/// 0 (black) … 1 (white), as the eye weighs it.
double brightness(RGBAColor const& color);
RGBAColor withAlpha(RGBAColor const& color, double alpha);
RGBAColor mixed(RGBAColor const& a, RGBAColor const& b, double share);

}
