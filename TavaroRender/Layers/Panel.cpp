#include <TavaroRender/Layers/Private/Panel.h>

#include <algorithm>
#include <cmath>
#include <string>

#include <TavaroCore/Values/CanvasUnit.h>
#include <TavaroRender/Layers/Private/ReadableText.h>

namespace tavaro {

namespace {

constexpr double usualSize = 36;
constexpr double smallestSize = 4;
constexpr double largestSize = 360;
constexpr double darkText = 0.4; // brightness below which a text wants light behind it
constexpr double rimWidth = 0.1; // em, half of it outside the letters
constexpr double rimStrength = 0.6;
// Of the sheet without an edge behind a bare text, em.
constexpr double veilMargin = 0.4; // past the letters
constexpr double veilSpread = 0.55;
constexpr double veilStrength = 0.66;

SoftShadow wideShadow(double em, RGBAColor const& behind) {
    return {.spread = 0.42 * em, .fall = 0.06 * em, .color = withAlpha(behind, 0.52)};
}

SoftShadow tightShadow(double em, RGBAColor const& behind) {
    return {.spread = 0.13 * em, .fall = 0.03 * em, .color = withAlpha(behind, 0.48)};
}

}

LayerScale::LayerScale(LayerSpec const& look)
    : width(static_cast<double>(std::max<std::int64_t>(look.canvasWidth, 1)))
    , height(static_cast<double>(std::max<std::int64_t>(look.canvasHeight, 1)))
    , unit(canvasUnit({static_cast<std::int64_t>(width), static_cast<std::int64_t>(height)}))
    , em((std::isfinite(look.fontSize) ? std::clamp(look.fontSize, smallestSize, largestSize) : usualSize) * unit) {}

LayerDrawing::LayerDrawing(LayerScale const& scale, double bodyWidth, double bodyHeight, double margin)
    : body_{std::ceil(margin), std::ceil(margin), std::ceil(std::max(bodyWidth, 1.0)),
            std::ceil(std::max(bodyHeight, 1.0))}
    , drawing_(body_.width + 2 * body_.x, body_.height + 2 * body_.y,
               std::min({1.0, scale.width / body_.width, scale.height / body_.height})) {}

void LayerDrawing::drawPanel(Panel const& panel) {
    drawing_.shadow({panel.shadow}, [&](cairo_t* on) { fillRounded(on, body_, panel.radius, RGBAColor::black); });
    fillRounded(cr(), body_, panel.radius, panel.color);
    if (panel.hairline <= 0 || panel.color.a <= 0) return;
    auto const edge = brightness(panel.color) < 0.5 ? RGBAColor{1, 1, 1, 0.14} : RGBAColor{0, 0, 0, 0.08};
    strokeRounded(cr(), body_, panel.radius, panel.hairline, edge);
}

DrawnLayer LayerDrawing::finish() {
    double const k = drawing_.scale();
    return {drawing_.finish(), {body_.x * k, body_.y * k, body_.width * k, body_.height * k}};
}

RGBAColor shadeBehind(RGBAColor const& color) {
    return brightness(color) < darkText ? RGBAColor::white : RGBAColor::black;
}

RGBAColor panelColor(LayerSpec const& look, double alpha) {
    if (look.background) return *look.background;
    return brightness(look.color) < darkText ? RGBAColor::rgb(0xFAFAFC, alpha) : RGBAColor::rgb(0x15171C, alpha);
}

Panel panelOf(LayerSpec const& look, double em, RGBAColor const& color) {
    double const unit = LayerScale(look).unit;
    return {.radius = 0.45 * em,
            .color = color,
            .shadow = {.spread = 0.6 * em, .fall = 0.2 * em, .color = {0, 0, 0, 0.34 * std::clamp(color.a, 0.0, 1.0)}},
            .hairline = std::max(1.5 * unit, 1.0)};
}

void paintVeil(Drawing& drawing, TextBlock const& text, CanvasPoint at, RGBAColor const& color) {
    double left = 0, top = 0, right = 0, bottom = 0;
    cairo_new_path(drawing.cr());
    text.trace(drawing.cr(), at, [&](std::size_t) { return TextPaint{.color = color}; });
    cairo_path_extents(drawing.cr(), &left, &top, &right, &bottom);
    cairo_new_path(drawing.cr());
    if (right <= left || bottom <= top) return;
    double const margin = veilMargin * text.size();
    CanvasRect const sheet{left - margin, top - margin, right - left + 2 * margin, bottom - top + 2 * margin};
    SoftShadow const soft{.spread = veilSpread * text.size(), .color = withAlpha(shadeBehind(color), veilStrength)};
    drawing.shadow({soft}, [&](cairo_t* on) { fillRounded(on, sheet, 2 * margin, RGBAColor::black); });
}

void paintBare(Drawing& drawing, TextBlock const& text, CanvasPoint at, RGBAColor const& color,
               TextBlock::PaintOf paintOf) {
    auto const behind = shadeBehind(color);
    auto const shape = [&](cairo_t* on) { text.paint(on, at, paintOf); };
    drawing.shadow({wideShadow(text.size(), behind), tightShadow(text.size(), behind)}, shape);
    // Shadows alone leave white letters on a white page without an edge.
    cairo_new_path(drawing.cr());
    text.trace(drawing.cr(), at, paintOf);
    setColor(drawing.cr(), withAlpha(behind, rimStrength));
    cairo_set_line_width(drawing.cr(), rimWidth * text.size());
    cairo_set_line_join(drawing.cr(), CAIRO_LINE_JOIN_ROUND);
    cairo_stroke(drawing.cr());
    text.paint(drawing.cr(), at, paintOf);
}

double bareReach(double em) {
    double const veil = (veilMargin + veilSpread * 1.5) * em;
    return std::max(wideShadow(em, RGBAColor::black).reach() + 0.3 * em, veil);
}

std::size_t shownBytes(LayerSpec const& look, std::string const& text) {
    return look.shownCharacters ? bytesOfGraphemes(text, *look.shownCharacters) : text.size();
}

}
