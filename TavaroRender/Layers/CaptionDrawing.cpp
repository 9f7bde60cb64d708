#include <TavaroRender/Layers/Private/LayerDrawings.h>

#include <algorithm>

#include <TavaroRender/Layers/Private/Panel.h>
#include <TavaroRender/Layers/Private/ReadableText.h>

namespace tavaro {

namespace {

constexpr std::size_t longestText = 1200;
constexpr char const* promptSign = "❯";

TextFace faceOf(CaptionFont font) {
    switch (font) {
    case CaptionFont::rounded: return TextFace::rounded;
    case CaptionFont::serif: return TextFace::serif;
    case CaptionFont::mono: return TextFace::mono;
    case CaptionFont::system: break;
    }
    return TextFace::text;
}

TextStyle styleOf(LayerSpec::Caption const& caption, double em) {
    auto const face = faceOf(caption.font);
    switch (caption.style) {
    case CaptionStyle::minimal:
        return {.face = face, .size = em, .weight = 600, .tracking = -0.006, .lineHeight = 1.32};
    case CaptionStyle::creator:
        return {.face = face == TextFace::text ? TextFace::display : face,
                .size = 1.42 * em,
                .weight = 800,
                .tracking = 0.002,
                .lineHeight = 1.2};
    case CaptionStyle::karaoke:
        return {.face = face, .size = em, .weight = 700, .tracking = -0.006, .lineHeight = 1.36};
    case CaptionStyle::developer: break;
    }
    return {.face = TextFace::mono, .size = 0.88 * em, .weight = 500, .lineHeight = 1.48};
}

/// What a moment of speech does to the stretch of the text that begins at a byte.
class SpokenPaint {
public:
    SpokenPaint(LayerSpec const& look, LayerSpec::Caption const& caption) : look_(look), caption_(caption) {}

    TextPaint operator()(std::size_t byte) const {
        TextPaint paint{.color = look_.color, .isShown = byte < caption_.shownBytes};
        bool const isSpoken = byte >= caption_.spokenBegin && byte < caption_.spokenEnd;
        if (caption_.style == CaptionStyle::karaoke) {
            paint.over = look_.highlightColor;
            paint.overShare = byte < caption_.spokenBegin ? 1.0
                              : isSpoken ? static_cast<double>(caption_.spokenSteps) / LayerSpec::Caption::stepsPerWord
                                         : 0.0;
        } else if (isSpoken) {
            paint.color = look_.highlightColor;
        }
        return paint;
    }

private:
    LayerSpec const& look_;
    LayerSpec::Caption const& caption_;
};

/// Bold letters with a dark rim that stand on any picture.
void paintOutlined(Drawing& drawing, TextBlock const& text, CanvasPoint at, LayerSpec const& look,
                   SpokenPaint const& paint) {
    auto const rim = brightness(look.color) < 0.4 ? RGBAColor::white : RGBAColor::rgb(0x0B0C0F);
    auto const outline = [&](cairo_t* on) {
        cairo_new_path(on);
        text.trace(on, at, paint);
        cairo_set_line_width(on, 0.17 * text.size());
        cairo_set_line_join(on, CAIRO_LINE_JOIN_ROUND);
        cairo_stroke(on);
    };
    drawing.fillOverShadow({.spread = 0.22 * text.size(), .fall = 0.08 * text.size(), .color = {0, 0, 0, 0.45}}, rim,
                           outline);
    text.paint(drawing.cr(), at, paint);
}

/// A caption's sheet and the room inside it, em.
struct CaptionSheet {
    double padX = 0;
    double padY = 0;
    double indent = 0; // of a prompt before the text
    std::optional<Panel> panel;
    double margin = 0; // around the body, canvas pixels
};

CaptionSheet sheetOf(LayerSpec const& look, LayerSpec::Caption const& caption, double em) {
    CaptionSheet sheet;
    switch (caption.style) {
    case CaptionStyle::minimal:
    case CaptionStyle::creator:
        sheet.margin = bareReach(em) + 0.1 * em;
        if (!look.background) return sheet;
        sheet.padX = 0.72;
        sheet.padY = 0.56;
        sheet.panel = panelOf(look, em, *look.background);
        sheet.panel->radius = 0.4 * em;
        break;
    case CaptionStyle::karaoke:
        sheet.padX = 0.95;
        sheet.padY = 0.66;
        sheet.panel = panelOf(look, em, panelColor(look, 0.94));
        sheet.panel->radius = 0.85 * em;
        break;
    case CaptionStyle::developer:
        sheet.padX = 0.9;
        sheet.padY = 0.74;
        sheet.indent = 1.3;
        sheet.panel = panelOf(look, em, look.background ? *look.background : RGBAColor::rgb(0x0E131C, 0.93));
        sheet.panel->radius = 0.42 * em;
        break;
    }
    sheet.margin = std::max(sheet.margin, sheet.panel->shadow.reach());
    return sheet;
}

void drawPrompt(TextFonts& fonts, cairo_t* cr, TextBlock const& text, CanvasPoint at, RGBAColor const& sheet) {
    TextBlock const prompt(fonts, promptSign, {.face = TextFace::mono, .size = text.size(), .weight = 700},
                           {.width = 10 * text.size(), .height = 10 * text.size(), .lines = 1});
    prompt.paint(cr, at, brightness(sheet) < 0.5 ? RGBAColor::rgb(0x6EE7A0) : RGBAColor::rgb(0x12804A));
}

}

DrawnLayer drawCaption(TextFonts& fonts, LayerSpec const& look, LayerSpec::Caption const& caption) {
    if (caption.shownBytes == 0) return {};
    if (auto readable = readableText(caption.text, longestText); readable != caption.text) {
        // Its words' places mean nothing any more.
        return drawCaption(fonts, look, {.text = std::move(readable), .style = caption.style, .font = caption.font});
    }
    LayerScale const scale(look);
    bool const isDeveloper = caption.style == CaptionStyle::developer;
    bool const isTall = scale.height > scale.width;
    TextRoom const room{.width = 0.8 * scale.width - (isDeveloper ? 2 * scale.em : 0),
                        .height = 0.6 * scale.height,
                        .lines = isTall ? 3 : 2,
                        .smallest = 0.62,
                        .alignment = isDeveloper ? TextAlignment::leading : TextAlignment::centre};
    TextBlock const text(fonts, caption.text, styleOf(caption, scale.em), room,
                         {caption.shownBytes, caption.spokenBegin, caption.spokenEnd});
    if (text.isEmpty()) return {};
    double const em = text.size();
    auto const area = text.area();
    auto const sheet = sheetOf(look, caption, em);
    LayerDrawing layer(scale, area.width + (2 * sheet.padX + sheet.indent) * em, area.height + 2 * sheet.padY * em,
                       sheet.margin);
    if (sheet.panel) layer.drawPanel(*sheet.panel);
    CanvasPoint const begin{layer.body().x + sheet.padX * em, layer.body().center().y - area.height / 2 - area.y};
    CanvasPoint const at = begin + CanvasPoint{sheet.indent * em - area.x, 0};
    SpokenPaint const paint(look, caption);
    if (isDeveloper) drawPrompt(fonts, layer.cr(), text, begin, sheet.panel->color);
    if (caption.style == CaptionStyle::creator) {
        paintOutlined(layer.drawing(), text, at, look, paint);
    } else if (sheet.panel) {
        text.paint(layer.cr(), at, paint);
    } else {
        paintVeil(layer.drawing(), text, at, look.color);
        paintBare(layer.drawing(), text, at, look.color, paint);
    }
    return layer.finish();
}

}
