#include <TavaroRender/Layers/Private/TextBlock.h>

#include <algorithm>
#include <cmath>

#include <hb-ot.h>

#include <TavaroRender/Layers/Private/Drawing.h>
#include <TavaroRender/Layers/Private/ReadableText.h>

namespace tavaro {

namespace {

constexpr double leastShrinkage = 0.95;
// Ink of Latin letters past capitals and baseline, em: less than this needs no more room.
constexpr double usualAccent = 0.22;
constexpr double usualDescender = 0.26;
constexpr double usualOverhang = 0.06;

double pixels(int units) { return static_cast<double>(units) / PANGO_SCALE; }

int units(double pixels) { return static_cast<int>(std::clamp(pixels, 1.0, 1e5) * PANGO_SCALE); }

/// The first `count` paragraphs; the last of them says that there were more.
std::string firstParagraphs(std::string const& text, int count) {
    std::size_t end = 0;
    for (int i = 0; i < count; ++i) {
        auto const found = text.find('\n', end);
        if (found == std::string::npos) return text;
        end = found + 1;
    }
    return text.substr(0, end - 1) + " …";
}

/// Fonts of coloured pictures, as emoji are, have no outlines.
bool isColoured(PangoFont* font) {
    if (!font) return false;
    auto* face = hb_font_get_face(pango_font_get_hb_font(font));
    return hb_ot_color_has_png(face) || hb_ot_color_has_layers(face) || hb_ot_color_has_svg(face);
}

std::vector<cairo_glyph_t> glyphsOf(PangoGlyphItem const& run, double x, double y) {
    std::vector<cairo_glyph_t> glyphs;
    glyphs.reserve(static_cast<std::size_t>(run.glyphs->num_glyphs));
    for (int i = 0; i < run.glyphs->num_glyphs; ++i) {
        auto const& info = run.glyphs->glyphs[i];
        // A character that no font has is left out: an empty box tells nobody anything.
        if (info.glyph != PANGO_GLYPH_EMPTY && !(info.glyph & PANGO_GLYPH_UNKNOWN_FLAG)) {
            glyphs.push_back({info.glyph, x + pixels(info.geometry.x_offset), y + pixels(info.geometry.y_offset)});
        }
        x += pixels(info.geometry.width);
    }
    return glyphs;
}

bool setFont(cairo_t* cr, PangoFont* font) {
    if (!font) return false;
    auto* scaled = pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(font));
    if (!scaled || cairo_scaled_font_status(scaled) != CAIRO_STATUS_SUCCESS) return false;
    // Not the scaled font itself: the drawing may have a scale of its own.
    cairo_matrix_t matrix;
    cairo_scaled_font_get_font_matrix(scaled, &matrix);
    CairoFontOptions const options(cairo_font_options_create());
    cairo_scaled_font_get_font_options(scaled, options.get());
    cairo_set_font_face(cr, cairo_scaled_font_get_font_face(scaled));
    cairo_set_font_matrix(cr, &matrix);
    cairo_set_font_options(cr, options.get());
    return true;
}

/// Glyphs are filled as paths: Cairo would move glyph images to whole pixels and space the letters unevenly.
void paintGlyphs(cairo_t* cr, PangoFont* font, std::vector<cairo_glyph_t> const& glyphs) {
    auto const count = static_cast<int>(glyphs.size());
    if (count == 0 || !setFont(cr, font)) return;
    if (isColoured(font)) {
        cairo_show_glyphs(cr, glyphs.data(), count);
        return;
    }
    cairo_new_path(cr);
    cairo_glyph_path(cr, glyphs.data(), count);
    cairo_fill(cr);
}

bool isRightToLeft(PangoGlyphItem const& run) { return run.item->analysis.level % 2 == 1; }

}

TextBlock::TextBlock(TextFonts& fonts, std::string text, TextStyle style, TextRoom const& room,
                     std::vector<std::size_t> cuts)
    : text_(std::move(text))
    , style_(style)
    , cuts_(std::move(cuts)) {
    std::sort(cuts_.begin(), cuts_.end());
    if (isBlank(text_) || !(room.width > 0)) return;
    if (room.wrap == LineWrap::none) text_ = firstParagraphs(text_, std::max(room.lines, 1));
    fit(fonts, room);
    capHeight_ = fonts.capHeight(style_) * style_.size;
    place(room);
}

void TextBlock::fit(TextFonts& fonts, TextRoom const& room) {
    double const smallest = style_.size * std::clamp(room.smallest, 0.01, 1.0);
    auto const lay = [&] {
        layout_ = fonts.layout(text_, style_, cuts_);
        if (room.wrap == LineWrap::balanced) pango_layout_set_width(layout_.get(), units(room.width));
    };
    lay();
    double factor = shrinkage(room);
    for (; factor < 1 && style_.size > smallest; factor = shrinkage(room)) {
        style_.size = std::max(style_.size * factor, smallest);
        lay();
    }
    if (factor == 1) {
        balance(room);
        return;
    }
    int const lines = std::clamp(static_cast<int>(room.height / (style_.size * style_.lineHeight)), 1, room.lines);
    if (room.wrap == LineWrap::none) {
        text_ = firstParagraphs(text_, lines);
    } else {
        std::replace(text_.begin(), text_.end(), '\n', ' ');
    }
    lay();
    pango_layout_set_width(layout_.get(), units(room.width));
    pango_layout_set_wrap(layout_.get(), PANGO_WRAP_WORD_CHAR);
    pango_layout_set_height(layout_.get(), room.wrap == LineWrap::none ? -1 : -lines);
    pango_layout_set_ellipsize(layout_.get(), PANGO_ELLIPSIZE_END);
}

double TextBlock::shrinkage(TextRoom const& room) const {
    PangoRectangle logical;
    pango_layout_get_extents(layout_.get(), nullptr, &logical);
    double const width = pixels(logical.width);
    double const pitch = style_.size * style_.lineHeight;
    double const lines = pango_layout_get_line_count(layout_.get());
    double const most = std::min<double>(room.lines, std::max(std::floor(room.height / pitch), 1.0));
    double factor = 1;
    if (width > room.width) factor = room.width / width;
    // Smaller letters need fewer lines that are lower as well; the root never makes them smaller than they must be.
    if (lines > most) factor = std::min(factor, std::sqrt(most / lines));
    return factor < 1 ? std::clamp(factor, 0.5, leastShrinkage) : 1;
}

/// Finds the narrowest width that takes no more lines, so that the lines become of about one length.
void TextBlock::balance(TextRoom const& room) {
    int const lines = pango_layout_get_line_count(layout_.get());
    if (room.wrap != LineWrap::balanced || lines < 2) return;
    double narrow = room.width / lines * 0.8;
    double wide = room.width;
    while (wide - narrow > style_.size / 4) {
        double const middle = (narrow + wide) / 2;
        pango_layout_set_width(layout_.get(), units(middle));
        PangoRectangle logical;
        pango_layout_get_extents(layout_.get(), nullptr, &logical);
        bool const isEnough =
            pango_layout_get_line_count(layout_.get()) <= lines && pixels(logical.width) <= middle + 0.01;
        (isEnough ? wide : narrow) = middle;
    }
    pango_layout_set_width(layout_.get(), units(wide));
}

void TextBlock::place(TextRoom const& room) {
    int const count = pango_layout_get_line_count(layout_.get());
    double width = 0;
    double descent = 0;
    std::vector<PangoRectangle> inks;
    for (int i = 0; i < count; ++i) {
        auto* line = pango_layout_get_line_readonly(layout_.get(), i);
        PangoRectangle ink, logical;
        pango_layout_line_get_extents(line, &ink, &logical);
        double const taken = 0.9 * (descent - pixels(logical.y));
        double const baseline =
            i == 0 ? capHeight_ : lines_.back().baseline + std::max(style_.lineHeight * style_.size, taken);
        descent = pixels(logical.y + logical.height);
        lines_.push_back({line, 0, baseline, pixels(logical.width)});
        inks.push_back(ink);
        width = std::max(width, pixels(logical.width));
    }
    double left = width, right = 0, top = lines_.back().baseline, bottom = 0;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        auto& line = lines_[i];
        bool const isRight = room.alignment == TextAlignment::leading &&
                             pango_layout_line_get_resolved_direction(line.line) == PANGO_DIRECTION_RTL;
        line.x = room.alignment == TextAlignment::centre ? (width - line.width) / 2 : isRight ? width - line.width : 0;
        if (inks[i].width <= 0) continue;
        left = std::min(left, line.x + pixels(inks[i].x));
        right = std::max(right, line.x + pixels(inks[i].x + inks[i].width));
        top = std::min(top, line.baseline + pixels(inks[i].y));
        bottom = std::max(bottom, line.baseline + pixels(inks[i].y + inks[i].height));
    }
    ink_ = {left, top, std::max(right - left, 0.0), std::max(bottom - top, 0.0)};
    double const em = style_.size;
    double const x = std::min(0.0, left + usualOverhang * em);
    double const y = std::min(0.0, top + usualAccent * em);
    area_ = {x, y, std::max(width, right - usualOverhang * em) - x,
             std::max(lines_.back().baseline, bottom - usualDescender * em) - y};
}

void TextBlock::eachRun(CanvasPoint at, FunctionRef<void(PangoGlyphItem*, double, double)> visit) const {
    for (auto const& line : lines_) {
        double x = at.x + line.x;
        for (auto* node = line.line->runs; node; node = node->next) {
            auto* run = static_cast<PangoGlyphItem*>(node->data);
            x += pixels(run->start_x_offset);
            visit(run, x, at.y + line.baseline - pixels(run->y_offset));
            x += pixels(pango_glyph_string_get_width(run->glyphs) + run->end_x_offset);
        }
    }
}

/// A stretch may be several runs, as Kana and Han are, on more than one line; it is covered in the order it is read in.
double TextBlock::covered(PangoGlyphItem const& run, double share) const {
    auto const stretchOf = [&](int byte) {
        return std::upper_bound(cuts_.begin(), cuts_.end(), static_cast<std::size_t>(byte)) - cuts_.begin();
    };
    auto const stretch = stretchOf(run.item->offset);
    double before = 0;
    double whole = 0;
    eachRun({}, [&](PangoGlyphItem* other, double, double) {
        if (stretchOf(other->item->offset) != stretch) return;
        double const width = pixels(pango_glyph_string_get_width(other->glyphs));
        whole += width;
        if (other->item->offset < run.item->offset) before += width;
    });
    return std::clamp(share * whole - before, 0.0, pixels(pango_glyph_string_get_width(run.glyphs)));
}

void TextBlock::paint(cairo_t* cr, CanvasPoint at, PaintOf paintOf) const {
    eachRun(at, [&](PangoGlyphItem* run, double x, double y) {
        auto const paint = paintOf(static_cast<std::size_t>(run->item->offset));
        if (!paint.isShown) return;
        auto const glyphs = glyphsOf(*run, x, y);
        setColor(cr, paint.color);
        paintGlyphs(cr, run->item->analysis.font, glyphs);
        if (!paint.over || paint.overShare <= 0) return;
        setColor(cr, *paint.over);
        if (paint.overShare >= 1) return paintGlyphs(cr, run->item->analysis.font, glyphs);
        double const width = covered(*run, paint.overShare);
        double const whole = pixels(pango_glyph_string_get_width(run->glyphs));
        double const reach = 4 * style_.size;
        if (width <= 0) return;
        cairo_save(cr);
        cairo_rectangle(cr, isRightToLeft(*run) ? x + whole - width : x, y - reach, width, 2 * reach);
        cairo_clip(cr);
        paintGlyphs(cr, run->item->analysis.font, glyphs);
        cairo_restore(cr);
    });
}

void TextBlock::paint(cairo_t* cr, CanvasPoint at, RGBAColor const& color) const {
    paint(cr, at, [&](std::size_t) { return TextPaint{color}; });
}

void TextBlock::trace(cairo_t* cr, CanvasPoint at, PaintOf paintOf) const {
    eachRun(at, [&](PangoGlyphItem* run, double x, double y) {
        auto* font = run->item->analysis.font;
        if (!paintOf(static_cast<std::size_t>(run->item->offset)).isShown || isColoured(font) || !setFont(cr, font))
            return;
        auto const glyphs = glyphsOf(*run, x, y);
        cairo_glyph_path(cr, glyphs.data(), static_cast<int>(glyphs.size()));
    });
}

}
