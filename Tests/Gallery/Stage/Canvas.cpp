#include "Canvas.h"

#include <pango/pangocairo.h>

#include <cmath>
#include <cstring>

namespace tavaro::gallery {

Canvas::Canvas(int width, int height)
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height))
    , cairo_(cairo_create(surface_)) {}

Canvas::~Canvas() {
    cairo_destroy(cairo_);
    cairo_surface_destroy(surface_);
}

void Canvas::setColor(Color color) {
    auto const part = [&](int shift) { return ((color.rgb >> shift) & 255) / 255.0; };
    cairo_set_source_rgba(cairo_, part(16), part(8), part(0), color.alpha);
}

void Canvas::roundedBox(double x, double y, double width, double height, double radius) {
    cairo_new_sub_path(cairo_);
    cairo_arc(cairo_, x + width - radius, y + radius, radius, -M_PI / 2, 0);
    cairo_arc(cairo_, x + width - radius, y + height - radius, radius, 0, M_PI / 2);
    cairo_arc(cairo_, x + radius, y + height - radius, radius, M_PI / 2, M_PI);
    cairo_arc(cairo_, x + radius, y + radius, radius, M_PI, 3 * M_PI / 2);
    cairo_close_path(cairo_);
}

void Canvas::box(double x, double y, double width, double height, double radius, Color color) {
    setColor(color);
    roundedBox(x, y, width, height, radius);
    cairo_fill(cairo_);
}

void Canvas::gradient(double x, double y, double width, double height, double radius, Color top, Color bottom) {
    auto* pattern = cairo_pattern_create_linear(x, y, x, y + height);
    auto const stop = [&](double at, Color color) {
        auto const part = [&](int shift) { return ((color.rgb >> shift) & 255) / 255.0; };
        cairo_pattern_add_color_stop_rgba(pattern, at, part(16), part(8), part(0), color.alpha);
    };
    stop(0, top);
    stop(1, bottom);
    cairo_set_source(cairo_, pattern);
    roundedBox(x, y, width, height, radius);
    cairo_fill(cairo_);
    cairo_pattern_destroy(pattern);
}

void Canvas::disc(double x, double y, double radiusX, double radiusY, Color color) {
    setColor(color);
    cairo_save(cairo_);
    cairo_translate(cairo_, x, y);
    cairo_scale(cairo_, radiusX, radiusY);
    cairo_arc(cairo_, 0, 0, 1, 0, 2 * M_PI);
    cairo_restore(cairo_);
    cairo_fill(cairo_);
}

void Canvas::line(double x0, double y0, double x1, double y1, double width, Color color) {
    setColor(color);
    cairo_set_line_width(cairo_, width);
    cairo_set_line_cap(cairo_, CAIRO_LINE_CAP_ROUND);
    cairo_move_to(cairo_, x0, y0);
    cairo_line_to(cairo_, x1, y1);
    cairo_stroke(cairo_);
}

void Canvas::text(std::string const& text, double x, double y, TextStyle const& style, Color color) {
    setColor(color);
    auto* layout = pango_cairo_create_layout(cairo_);
    auto* font = pango_font_description_from_string(style.isMono ? "JetBrains Mono" : "Inter");
    pango_font_description_set_absolute_size(font, style.size * PANGO_SCALE);
    pango_font_description_set_weight(font, style.isBold ? PANGO_WEIGHT_SEMIBOLD : PANGO_WEIGHT_NORMAL);
    auto* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(pango_layout_get_context(layout), options);
    pango_layout_set_font_description(layout, font);
    pango_layout_set_text(layout, text.c_str(), static_cast<int>(text.size()));
    cairo_move_to(cairo_, x, y);
    pango_cairo_show_layout(cairo_, layout);
    cairo_font_options_destroy(options);
    pango_font_description_free(font);
    g_object_unref(layout);
}

void Canvas::picture(ImageView image, double x, double y) {
    auto* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, image.width, image.height);
    auto* pixels = cairo_image_surface_get_data(surface);
    for (int row = 0; row < image.height; ++row)
        for (int column = 0; column < image.width; ++column) {
            auto const* p = image.row(row) + 4 * column;
            auto const part = [&](int c) { return static_cast<std::uint32_t>(p[c] * p[3] / 255); };
            std::uint32_t const value = std::uint32_t(p[3]) << 24 | part(0) << 16 | part(1) << 8 | part(2);
            std::memcpy(pixels + row * cairo_image_surface_get_stride(surface) + 4 * column, &value, 4);
        }
    cairo_surface_mark_dirty(surface);
    cairo_set_source_surface(cairo_, surface, x, y);
    cairo_paint(cairo_);
    cairo_surface_destroy(surface);
}

Image Canvas::image() const {
    cairo_surface_flush(surface_);
    auto const width = cairo_image_surface_get_width(surface_);
    auto const height = cairo_image_surface_get_height(surface_);
    auto const* pixels = cairo_image_surface_get_data(surface_);
    auto const stride = cairo_image_surface_get_stride(surface_);
    Image image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            std::uint32_t value;
            std::memcpy(&value, pixels + y * stride + 4 * x, 4);
            auto* p = image.row(y) + 4 * x;
            p[0] = static_cast<std::uint8_t>(value >> 16);
            p[1] = static_cast<std::uint8_t>(value >> 8);
            p[2] = static_cast<std::uint8_t>(value);
            p[3] = 255;
        }
    return image;
}

}
