#pragma once

#include <string>

#include <TavaroMedia/Frames/Image.h>

typedef struct _cairo cairo_t;
typedef struct _cairo_surface cairo_surface_t;

namespace tavaro::gallery {

/// The little drawing that the gallery's pictures take: filled shapes and lines of text, in pixels.
class Canvas {
public:
    Canvas(int width, int height);
    ~Canvas();
    Canvas(Canvas const&) = delete;

    struct Color {
        unsigned rgb = 0;
        double alpha = 1;
    };

    void box(double x, double y, double width, double height, double radius, Color color);
    void gradient(double x, double y, double width, double height, double radius, Color top, Color bottom);
    void disc(double x, double y, double radiusX, double radiusY, Color color);
    void line(double x0, double y0, double x1, double y1, double width, Color color);

    struct TextStyle {
        double size = 16;
        bool isBold = false;
        bool isMono = false;
    };
    void text(std::string const& text, double x, double y, TextStyle const& style, Color color);

    void picture(ImageView image, double x, double y);

    cairo_t* cairo() const { return cairo_; }
    void setColor(Color color);

    Image image() const;

private:
    void roundedBox(double x, double y, double width, double height, double radius);

    cairo_surface_t* surface_;
    cairo_t* cairo_;
};

}
