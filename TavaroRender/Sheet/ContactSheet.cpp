#include <TavaroRender/Sheet/ContactSheet.h>

#include <algorithm>
#include <cassert>
#include <cstring>

#include <TavaroRender/Layers/Private/Drawing.h>
#include <TavaroRender/Layers/Private/ReadableText.h>
#include <TavaroRender/Layers/Private/TextBlock.h>

namespace tavaro {

namespace {

constexpr std::size_t longestTitle = 120;

RGBAColor const sheetColor = RGBAColor::rgb(0x17181D);
RGBAColor const emptyColor = RGBAColor::rgb(0x24262D); // behind what is transparent in a picture
RGBAColor const titleColor = {1, 1, 1, 0.94};
RGBAColor const labelColor = {1, 1, 1, 0.62};
RGBAColor const hairlineColor = {1, 1, 1, 0.10};

CairoSurface surfaceOf(ImageView picture) {
    CairoSurface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, picture.width, picture.height));
    auto* const data = cairo_image_surface_get_data(surface.get());
    auto const stride = static_cast<std::ptrdiff_t>(cairo_image_surface_get_stride(surface.get()));
    for (int y = 0; data && y < picture.height; ++y) {
        auto const* from = picture.row(y);
        for (int x = 0; x < picture.width; ++x, from += 4) {
            auto const byAlpha = [&](int channel) -> std::uint32_t { return (from[channel] * from[3] + 127u) / 255u; };
            std::uint32_t const argb = std::uint32_t{from[3]} << 24 | byAlpha(0) << 16 | byAlpha(1) << 8 | byAlpha(2);
            std::memcpy(data + y * stride + 4 * x, &argb, 4);
        }
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

TextRoom lineOf(double width, double size) {
    return {.width = width,
            .height = 3 * size,
            .lines = 1,
            .smallest = 0.8,
            .wrap = LineWrap::none,
            .alignment = TextAlignment::leading};
}

double widthOf(TextBlock const& text) { return text.isEmpty() ? 0 : text.lineRight(0) - text.lineLeft(0); }

}

struct ContactSheet::State {
    explicit State(SheetLayout const& layout)
        : layout(layout)
        , drawing(static_cast<int>(layout.sheet.width), static_cast<int>(layout.sheet.height)) {}

    SheetLayout const layout;
    Drawing drawing;
    TextFonts fonts;
    int placed = 0;

    /// The left or right end of the line at `x`, its baseline at `y`.
    void write(TextBlock const& text, double x, double baseline, RGBAColor const& color) {
        if (!text.isEmpty()) text.paint(drawing.cr(), {x - text.lineLeft(0), baseline - text.baseline(0)}, color);
    }

    void writeHeader(std::string const& title, std::string const& detail) {
        double const room = static_cast<double>(layout.sheet.width - 2 * layout.margin);
        double const size = layout.titleSize;
        TextBlock const facts(fonts, readableText(detail, longestTitle, LineBreaks::toSpaces), {.size = 0.62 * size},
                              lineOf(0.6 * room, size));
        double const left = room - widthOf(facts) - size;
        TextBlock const name(fonts, readableText(title, longestTitle, LineBreaks::toSpaces),
                             {.face = TextFace::display, .size = size, .weight = 600},
                             lineOf(std::max(left, 0.3 * room), size));
        auto const margin = static_cast<double>(layout.margin);
        double const baseline = margin + 0.75 * size;
        write(name, margin, baseline, titleColor);
        if (left >= 0.3 * room) write(facts, margin + room - widthOf(facts), baseline, labelColor);
    }
};

ContactSheet::ContactSheet(SheetLayout const& layout, std::string const& title, std::string const& detail)
    : state_(std::make_unique<State>(layout)) {
    setColor(state_->drawing.cr(), sheetColor);
    cairo_paint(state_->drawing.cr());
    state_->writeHeader(title, detail);
}

ContactSheet::~ContactSheet() = default;

void ContactSheet::add(ImageView picture, std::string const& label) {
    auto& state = *state_;
    auto const& layout = state.layout;
    assert(state.placed < layout.columns * layout.rows);
    auto* cr = state.drawing.cr();
    CanvasRect const place{static_cast<double>(layout.pictureX(state.placed)),
                           static_cast<double>(layout.pictureY(state.placed)), static_cast<double>(picture.width),
                           static_cast<double>(picture.height)};
    double const radius = std::clamp(place.width / 40, 2.0, 10.0);
    fillRounded(cr, place, radius, emptyColor);
    auto const surface = surfaceOf(picture);
    cairo_set_source_surface(cr, surface.get(), place.x, place.y);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_NEAREST);
    cairo_new_path(cr);
    addRounded(cr, place, radius);
    cairo_fill(cr);
    strokeRounded(cr, place, radius, 1, hairlineColor);
    double const size = layout.labelSize;
    TextBlock const text(state.fonts, readableText(label, longestTitle, LineBreaks::toSpaces),
                         {.size = size, .weight = 500}, lineOf(place.width, size));
    state.write(text, place.x + 1, place.maxY() + 1.45 * size, labelColor);
    ++state.placed;
}

std::shared_ptr<Image const> ContactSheet::finish() { return state_->drawing.finish(); }

}
