#include "DrawnScreen.h"

#include <TavaroCore/Files/ReleaseWith.h>

#include <pango/pangocairo.h>

#include <array>
#include <unordered_map>

namespace tavaro {

namespace {

using Surface = std::unique_ptr<cairo_surface_t, ReleaseWith<cairo_surface_destroy>>;
using Context = std::unique_ptr<cairo_t, ReleaseWith<cairo_destroy>>;
using Layout = std::unique_ptr<PangoLayout, ReleaseWith<g_object_unref>>;

constexpr std::size_t mostKept = 4000; // lines

void setInk(cairo_t* context, Ink ink) {
    cairo_set_source_rgb(context, ink.red / 255.0, ink.green / 255.0, ink.blue / 255.0);
}

std::string keyOf(std::string const& text, TextFace const& face) {
    return face.family + (face.isBold ? "*" : "/") + std::to_string(face.size) + "\n" + text;
}

void add(PangoAttrList* list, InkRun const& run) {
    auto* attribute = pango_attr_foreground_new(run.ink.red * 257, run.ink.green * 257, run.ink.blue * 257);
    attribute->start_index = static_cast<guint>(run.start);
    attribute->end_index = static_cast<guint>(run.end);
    pango_attr_list_insert(list, attribute);
}

Layout layoutOf(std::string const& text, TextFace const& face) {
    Surface const surface(cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1));
    Context const context(cairo_create(surface.get()));
    auto* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_SLIGHT);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_ON);
    Layout layout(pango_cairo_create_layout(context.get()));
    pango_cairo_context_set_font_options(pango_layout_get_context(layout.get()), options);
    cairo_font_options_destroy(options);
    auto* font = pango_font_description_new();
    pango_font_description_set_family(font, face.family.c_str());
    pango_font_description_set_absolute_size(font, face.size * PANGO_SCALE);
    if (face.isBold) pango_font_description_set_weight(font, PANGO_WEIGHT_BOLD);
    pango_layout_set_font_description(layout.get(), font);
    pango_font_description_free(font);
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    return layout;
}

std::vector<LetterBox> lettersOf(std::string const& text, PangoLayout* layout) {
    std::vector<LetterBox> letters;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if ((static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) continue; // the middle of a character
        PangoRectangle place{};
        pango_layout_index_to_pos(layout, static_cast<int>(at), &place);
        int const left = PANGO_PIXELS(place.x);
        letters.push_back(
            {at,
             {left, PANGO_PIXELS(place.y), PANGO_PIXELS(place.x + place.width) - left, PANGO_PIXELS(place.height)}});
    }
    return letters;
}

}

struct DrawnScreen::State {
    Surface surface;
    Context context;
    std::unordered_map<std::string, Surface> lines;
    std::unordered_map<std::string, std::vector<LetterBox>> letters;
};

DrawnScreen::DrawnScreen(int width, int height) : state_(std::make_unique<State>()) {
    state_->surface.reset(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    state_->context.reset(cairo_create(state_->surface.get()));
}

DrawnScreen::~DrawnScreen() = default;
DrawnScreen::DrawnScreen(DrawnScreen&&) noexcept = default;

int DrawnScreen::width() const { return cairo_image_surface_get_width(state_->surface.get()); }
int DrawnScreen::height() const { return cairo_image_surface_get_height(state_->surface.get()); }

void DrawnScreen::fill(PixelBox const& area, Ink ink) {
    auto* context = state_->context.get();
    setInk(context, ink);
    cairo_rectangle(context, area.x, area.y, area.width, area.height);
    cairo_fill(context);
}

void DrawnScreen::clip(PixelBox const& area) {
    auto* context = state_->context.get();
    cairo_reset_clip(context);
    if (area.isEmpty()) return;
    cairo_rectangle(context, area.x, area.y, area.width, area.height);
    cairo_clip(context);
}

void DrawnScreen::write(std::string const& text, int x, int top, TextFace const& face, Ink ink,
                        std::span<InkRun const> runs) {
    if (text.empty()) return;
    std::string key{static_cast<char>(ink.red), static_cast<char>(ink.green), static_cast<char>(ink.blue)};
    for (auto const& run : runs) key += std::to_string(run.start * 256 + run.ink.green) + ";";
    key += keyOf(text, face);
    if (state_->lines.size() > mostKept) state_->lines.clear();
    auto& line = state_->lines[key];
    if (!line) {
        auto const layout = layoutOf(text, face);
        auto* inks = pango_attr_list_new();
        for (auto const& run : runs) add(inks, run);
        pango_layout_set_attributes(layout.get(), inks);
        pango_attr_list_unref(inks);
        int width = 0, height = 0;
        pango_layout_get_pixel_size(layout.get(), &width, &height);
        line.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width + 4, height + 2));
        Context const context(cairo_create(line.get()));
        setInk(context.get(), ink);
        cairo_move_to(context.get(), 2, 0);
        pango_cairo_show_layout(context.get(), layout.get());
    }
    cairo_set_source_surface(state_->context.get(), line.get(), x - 2, top);
    cairo_paint(state_->context.get());
}

void DrawnScreen::drawPointer(int x, int y, double scale) {
    static constexpr std::array<std::array<double, 2>, 7> arrow{
        {{0, 0}, {0, 16}, {4, 12.5}, {6.5, 18}, {9, 17}, {6.5, 11.5}, {11.5, 11.5}}};
    auto* context = state_->context.get();
    for (auto const& [dx, dy] : arrow) cairo_line_to(context, x + dx * scale, y + dy * scale);
    cairo_close_path(context);
    setInk(context, {0, 0, 0});
    cairo_fill_preserve(context);
    setInk(context, {255, 255, 255});
    cairo_set_line_width(context, scale);
    cairo_stroke(context);
}

std::vector<LetterBox> const& DrawnScreen::letters(std::string const& text, TextFace const& face) {
    auto const [entry, isNew] = state_->letters.try_emplace(keyOf(text, face));
    if (isNew) entry->second = lettersOf(text, layoutOf(text, face).get());
    return entry->second;
}

int DrawnScreen::lineHeight(TextFace const& face) { return letters("X", face).front().box.height; }

ImageView DrawnScreen::pixels() const {
    auto* surface = state_->surface.get();
    cairo_surface_flush(surface);
    return {cairo_image_surface_get_data(surface), width(), height(), cairo_image_surface_get_stride(surface)};
}

Image DrawnScreen::picture() const {
    Image image(width(), height());
    auto const from = pixels();
    for (int y = 0; y < height(); ++y) {
        auto const* source = from.row(y);
        auto* target = image.row(y);
        for (int x = 0; x < width(); ++x, source += 4, target += 4) {
            target[0] = source[2];
            target[1] = source[1];
            target[2] = source[0];
            target[3] = 255;
        }
    }
    return image;
}

std::vector<std::uint8_t> DrawnScreen::gray() const {
    std::vector<std::uint8_t> levels;
    levels.reserve(static_cast<std::size_t>(width()) * static_cast<std::size_t>(height()));
    auto const from = pixels();
    for (int y = 0; y < height(); ++y) {
        auto const* pixel = from.row(y);
        for (int x = 0; x < width(); ++x, pixel += 4) {
            levels.push_back(static_cast<std::uint8_t>((54 * pixel[2] + 183 * pixel[1] + 19 * pixel[0]) >> 8));
        }
    }
    return levels;
}

}
