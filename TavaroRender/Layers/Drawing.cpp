#include <TavaroRender/Layers/Private/Drawing.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <string>

#include <TavaroRender/Layers/Private/AlphaBlur.h>
#include <TavaroRender/Layers/Private/LayerError.h>

namespace tavaro {

Drawing::Drawing(double width, double height, double scale)
    : width_(std::max(static_cast<int>(std::ceil(width * scale)), 1))
    , height_(std::max(static_cast<int>(std::ceil(height * scale)), 1))
    , scale_(scale)
    , surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width_, height_))
    , context_(cairo_create(surface_.get())) {
    if (cairo_surface_status(surface_.get()) != CAIRO_STATUS_SUCCESS) {
        throw LayerError(LayerError::Kind::noMemory,
                         "A text layer of " + std::to_string(width_) + " × " + std::to_string(height_) +
                             " pixels could not be drawn because there is not enough memory.");
    }
    cairo_scale(cr(), scale_, scale_);
}

CairoSurface Drawing::mask() const {
    return CairoSurface(cairo_image_surface_create(CAIRO_FORMAT_A8, width_, height_));
}

CairoSurface Drawing::maskOf(Shape shape) const {
    auto result = mask();
    CairoContext const on(cairo_create(result.get()));
    cairo_scale(on.get(), scale_, scale_);
    shape(on.get());
    return result;
}

void Drawing::blur(cairo_surface_t* mask, SoftShadow const& shadow) const {
    cairo_surface_flush(mask);
    // Three boxes of radius r have a deviation of about r, which is half the spread.
    blurAlpha(cairo_image_surface_get_data(mask), width_, height_, cairo_image_surface_get_stride(mask),
              static_cast<int>(std::lround(shadow.spread * scale_ / 2)));
    cairo_surface_mark_dirty(mask);
}

/// Whole pixels of fall: a mask between pixels would be resampled.
void Drawing::paint(cairo_surface_t* mask, RGBAColor const& color, double fall) {
    cairo_save(cr());
    cairo_identity_matrix(cr());
    setColor(cr(), color);
    cairo_mask_surface(cr(), mask, 0, std::round(fall * scale_));
    cairo_restore(cr());
}

void Drawing::shadow(std::initializer_list<SoftShadow> shadows, Shape shape) {
    auto const sharp = maskOf(shape);
    cairo_surface_flush(sharp.get());
    auto const* const from = cairo_image_surface_get_data(sharp.get());
    auto const size =
        static_cast<std::size_t>(cairo_image_surface_get_stride(sharp.get())) * static_cast<std::size_t>(height_);
    for (auto const& shadow : shadows) {
        if (shadow.color.a <= 0) continue;
        auto const blurred = mask();
        cairo_surface_flush(blurred.get());
        if (auto* to = cairo_image_surface_get_data(blurred.get()); to && from) std::memcpy(to, from, size);
        cairo_surface_mark_dirty(blurred.get());
        blur(blurred.get(), shadow);
        paint(blurred.get(), shadow.color, shadow.fall);
    }
}

void Drawing::fillOverShadow(SoftShadow const& shadow, RGBAColor const& color, Shape shape) {
    auto const sharp = maskOf(shape);
    this->shadow({shadow}, [&](cairo_t* on) {
        cairo_identity_matrix(on);
        cairo_set_source_rgba(on, 0, 0, 0, 1);
        cairo_mask_surface(on, sharp.get(), 0, 0);
    });
    paint(sharp.get(), color, 0);
}

std::shared_ptr<Image const> Drawing::finish() {
    context_.reset();
    cairo_surface_flush(surface_.get());
    auto const* data = cairo_image_surface_get_data(surface_.get());
    auto const stride = static_cast<std::ptrdiff_t>(cairo_image_surface_get_stride(surface_.get()));
    auto image = std::make_shared<Image>(width_, height_);
    for (int y = 0; y < height_; ++y) {
        auto* to = image->row(y);
        for (int x = 0; x < width_; ++x) {
            std::uint32_t argb;
            std::memcpy(&argb, data + y * stride + 4 * x, 4);
            to[4 * x] = static_cast<std::uint8_t>(argb >> 16);
            to[4 * x + 1] = static_cast<std::uint8_t>(argb >> 8);
            to[4 * x + 2] = static_cast<std::uint8_t>(argb);
            to[4 * x + 3] = static_cast<std::uint8_t>(argb >> 24);
        }
    }
    surface_.reset();
    return image;
}

void setColor(cairo_t* cr, RGBAColor const& color) { cairo_set_source_rgba(cr, color.r, color.g, color.b, color.a); }

void addRounded(cairo_t* cr, CanvasRect const& rect, double radius) {
    using std::numbers::pi;
    double const r = std::clamp(radius, 0.0, std::max(std::min(rect.width, rect.height) / 2, 0.0));
    cairo_new_sub_path(cr);
    cairo_arc(cr, rect.maxX() - r, rect.y + r, r, -pi / 2, 0);
    cairo_arc(cr, rect.maxX() - r, rect.maxY() - r, r, 0, pi / 2);
    cairo_arc(cr, rect.x + r, rect.maxY() - r, r, pi / 2, pi);
    cairo_arc(cr, rect.x + r, rect.y + r, r, pi, 3 * pi / 2);
    cairo_close_path(cr);
}

void fillRounded(cairo_t* cr, CanvasRect const& rect, double radius, RGBAColor const& color) {
    cairo_new_path(cr);
    addRounded(cr, rect, radius);
    setColor(cr, color);
    cairo_fill(cr);
}

void strokeRounded(cairo_t* cr, CanvasRect const& rect, double radius, double width, RGBAColor const& color) {
    CanvasRect const inner{rect.x + width / 2, rect.y + width / 2, rect.width - width, rect.height - width};
    if (inner.isEmpty()) return;
    cairo_new_path(cr);
    addRounded(cr, inner, radius - width / 2);
    setColor(cr, color);
    cairo_set_line_width(cr, width);
    cairo_stroke(cr);
}

double brightness(RGBAColor const& color) {
    return std::clamp(0.299 * color.r + 0.587 * color.g + 0.114 * color.b, 0.0, 1.0);
}

RGBAColor withAlpha(RGBAColor const& color, double alpha) { return {color.r, color.g, color.b, alpha}; }

RGBAColor mixed(RGBAColor const& a, RGBAColor const& b, double share) {
    return {a.r + (b.r - a.r) * share, a.g + (b.g - a.g) * share, a.b + (b.b - a.b) * share, a.a + (b.a - a.a) * share};
}

}
