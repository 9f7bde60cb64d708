#include <TavaroRender/Layers/Private/TextFonts.h>

#include <algorithm>

#include <TavaroRender/Layers/Private/LayerError.h>
#include <TavaroRender/Layers/Private/ReadableText.h>

namespace tavaro {

namespace {

/// The faces by preference; a family that the machine lacks is passed over.
char const* familiesOf(TextFace face) {
    switch (face) {
    case TextFace::display: return "Inter Display, Inter, Noto Sans, DejaVu Sans, sans-serif";
    case TextFace::rounded: return "Quicksand, Nunito, Inter, Noto Sans, DejaVu Sans, sans-serif";
    case TextFace::serif: return "Noto Serif, DejaVu Serif, serif";
    case TextFace::mono: return "JetBrains Mono, DejaVu Sans Mono, monospace";
    case TextFace::text: break;
    }
    return "Inter, Noto Sans, DejaVu Sans, sans-serif";
}

void insert(PangoAttrList* list, PangoAttribute* attribute, std::size_t begin, std::size_t end) {
    attribute->start_index = static_cast<guint>(begin);
    attribute->end_index = static_cast<guint>(end);
    pango_attr_list_insert(list, attribute);
}

/// Pango divides runs where attributes change. Colours leave shaping and lines as they are, so a colour of its own for
/// each stretch divides the runs and moves nothing.
void insertCuts(PangoAttrList* list, std::size_t size, std::vector<std::size_t> cuts) {
    std::sort(cuts.begin(), cuts.end());
    std::size_t begin = 0;
    guint16 colour = 0;
    for (std::size_t const cut : cuts) {
        if (cut <= begin || cut >= size) continue;
        insert(list, pango_attr_foreground_new(colour++, 0, 0), begin, cut);
        begin = cut;
    }
    if (begin > 0) insert(list, pango_attr_foreground_new(colour, 0, 0), begin, size);
}

}

TextFonts::TextFonts() : map_(pango_cairo_font_map_new()), context_(pango_font_map_create_context(map_.get())) {
    CairoFontOptions const options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context_.get(), options.get());
    pango_context_set_round_glyph_positions(context_.get(), FALSE);
    PangoDescription const any(pango_font_description_from_string("sans-serif"));
    if (PangoFontHandle const font(pango_font_map_load_font(map_.get(), context_.get(), any.get())); !font) {
        throw LayerError(LayerError::Kind::noFonts,
                         "The texts of the film could not be drawn because this computer has no fonts; install one, "
                         "for example Inter.");
    }
}

PangoLayoutHandle TextFonts::layout(std::string_view text, TextStyle const& style,
                                    std::vector<std::size_t> const& cuts) const {
    pango_context_set_language(context_.get(), pango_language_from_string(languageOf(text)));
    PangoLayoutHandle layout(pango_layout_new(context_.get()));
    PangoDescription const font(pango_font_description_new());
    pango_font_description_set_family_static(font.get(), familiesOf(style.face));
    pango_font_description_set_weight(font.get(), static_cast<PangoWeight>(style.weight));
    pango_font_description_set_absolute_size(font.get(), style.size * PANGO_SCALE);
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    PangoAttributes const attributes(pango_attr_list_new());
    if (style.tracking != 0) {
        auto const spacing = static_cast<int>(style.tracking * style.size * PANGO_SCALE);
        insert(attributes.get(), pango_attr_letter_spacing_new(spacing), 0, text.size());
    }
    // Code is read letter by letter: "-->" must not become an arrow that nobody can type.
    if (style.face == TextFace::mono) {
        insert(attributes.get(), pango_attr_font_features_new("calt=0, liga=0"), 0, text.size());
    }
    insertCuts(attributes.get(), text.size(), cuts);
    pango_layout_set_attributes(layout.get(), attributes.get());
    return layout;
}

double TextFonts::capHeight(TextStyle const& style) {
    auto const [found, isNew] = capHeights_.try_emplace({style.face, style.weight}, 0.0);
    if (isNew) {
        constexpr double size = 200;
        auto const measured = layout("H", {.face = style.face, .size = size, .weight = style.weight}, {});
        PangoRectangle ink;
        pango_layout_get_extents(measured.get(), &ink, nullptr);
        found->second = std::clamp(static_cast<double>(ink.height) / PANGO_SCALE / size, 0.4, 1.0);
    }
    return found->second;
}

}
