#include <TavaroRender/Layers/Private/LayerDrawings.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include <TavaroRender/Layers/Private/Panel.h>

namespace tavaro {

namespace {

constexpr int curvePoints = 40;
constexpr double farAway = 16384; // pixels; ends further out than that are moved in

/// Where an arrow goes and how thick it is.
struct ArrowShape {
    CanvasPoint from;
    CanvasPoint bend; // the control point of its quadratic curve
    CanvasPoint to;
    double thickness; // of the shaft where it meets the head
    double headLength;
    double headWidth;

    CanvasPoint point(double t) const { return from * ((1 - t) * (1 - t)) + bend * (2 * t * (1 - t)) + to * (t * t); }
    CanvasPoint direction(double t) const {
        auto const d = (bend - from) * (1 - t) + (to - bend) * t;
        double const length = std::max(d.length(), 1e-9);
        return {d.x / length, d.y / length};
    }
};

CanvasPoint across(CanvasPoint direction) { return {-direction.y, direction.x}; }

ArrowShape shapeOf(LayerSpec const& look, LayerSpec::Arrow const& arrow) {
    LayerScale const scale(look);
    auto const way = arrow.to - arrow.from;
    double const length = way.length();
    // The curve bows upward, or downward where up would leave the canvas.
    CanvasPoint side = across(way * (1 / length));
    if (side.y > 0) side = side * -1;
    auto const middle = (arrow.from + arrow.to) * 0.5;
    double const bow = 0.2 * length;
    auto bend = middle + side * bow;
    if (bend.y < 0 || bend.x < 0 || bend.x > scale.width) bend = middle - side * bow;
    double const thickness = std::min(0.3 * scale.em, length * 0.09);
    return {arrow.from, bend, arrow.to, thickness, 3.8 * thickness, 3.9 * thickness};
}

/// The outline of the arrow drawn up to `end` of its way: a shaft that widens from the tail, and a swept head.
void addArrow(cairo_t* cr, ArrowShape const& shape, double end) {
    auto const tip = shape.point(end);
    std::vector<CanvasPoint> left, right;
    auto neck = shape.from;
    auto neckDirection = shape.direction(0);
    for (int i = 0; i <= curvePoints; ++i) {
        double const t = end * i / curvePoints;
        auto const p = shape.point(t);
        if ((tip - p).length() < shape.headLength * 0.78) break;
        auto const d = shape.direction(t);
        double const half = shape.thickness * (0.22 + 0.28 * t);
        left.push_back(p + across(d) * half);
        right.push_back(p - across(d) * half);
        neck = p;
        neckDirection = d;
    }
    auto aim = tip - neck;
    double const reach = aim.length();
    aim = reach > 1e-6 ? aim * (1 / reach) : neckDirection;
    auto const base = tip - aim * shape.headLength;
    auto const wing = across(aim) * (shape.headWidth / 2);
    cairo_new_path(cr);
    for (auto const& p : left) cairo_line_to(cr, p.x, p.y);
    for (auto const& p : {base + wing, tip, base - wing}) cairo_line_to(cr, p.x, p.y);
    for (auto p = right.rbegin(); p != right.rend(); ++p) cairo_line_to(cr, p->x, p->y);
    if (!left.empty()) {
        double const half = (left.front() - right.front()).length() / 2;
        double const angle = std::atan2(right.front().y - shape.from.y, right.front().x - shape.from.x);
        cairo_arc_negative(cr, shape.from.x, shape.from.y, half, angle, angle - std::numbers::pi);
    }
    cairo_close_path(cr);
}

/// Fills the arrow with its corners rounded.
void paintArrow(cairo_t* cr, ArrowShape const& shape, double end, CanvasPoint offset, double grow) {
    cairo_save(cr);
    cairo_translate(cr, offset.x, offset.y);
    addArrow(cr, shape, end);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_width(cr, shape.thickness * 0.4 + 2 * grow);
    cairo_fill_preserve(cr);
    cairo_stroke(cr);
    cairo_restore(cr);
}

/// The edge that a shape keeps on a picture of its own colour. Pages are mostly white or dark, so what is white or
/// black itself needs it most.
RGBAColor rimColor(LayerSpec const& look) {
    auto const behind = shadeBehind(look.color);
    double const contrast = std::abs(brightness(look.color) - brightness(behind));
    return withAlpha(behind, (0.1 + 0.5 * contrast) * look.color.a);
}
double rimWidth(LayerScale const& scale) { return std::max(1.6 * scale.em / 36, 0.8 * std::min(scale.unit * 3, 1.0)); }

bool isNear(CanvasPoint point) { return std::abs(point.x) <= farAway && std::abs(point.y) <= farAway; }

double boxLine(LayerScale const& scale) {
    return std::max(std::round(scale.em / 36 * 5), 1.0 * std::min(scale.unit * 3, 1.0));
}
double boxRadius(LayerScale const& scale) { return std::round(16 * scale.em / 36); }

SoftShadow boxShadow(LayerSpec const& look) {
    LayerScale const scale(look);
    return {.spread = 14 * scale.em / 36, .fall = 3 * scale.em / 36, .color = withAlpha(shadeBehind(look.color), 0.42)};
}

/// How far shadow and rim reach past the box.
double boxReach(LayerSpec const& look) {
    return std::max(boxShadow(look).reach(), std::ceil(rimWidth(LayerScale(look))));
}

void paintBox(LayerDrawing& layer, LayerSpec const& look) {
    LayerScale const scale(look);
    auto const& body = layer.body();
    double const line = std::min(boxLine(scale), std::min(body.width, body.height) / 2);
    double const radius = boxRadius(scale);
    layer.drawing().shadow({boxShadow(look)},
                           [&](cairo_t* on) { strokeRounded(on, body, radius, line, RGBAColor::black); });
    if (look.background) fillRounded(layer.cr(), body, radius, *look.background);
    double const rim = rimWidth(scale);
    CanvasRect const around{body.x - rim, body.y - rim, body.width + 2 * rim, body.height + 2 * rim};
    strokeRounded(layer.cr(), around, radius + rim, line + 2 * rim, rimColor(look));
    strokeRounded(layer.cr(), body, radius, line, look.color);
}

/// The part of the bitmap as a bitmap of its own.
DrawnLayer cut(DrawnLayer const& whole, int x, int y, int width, int height) {
    auto image = std::make_shared<Image>(width, height);
    for (int row = 0; row < height; ++row) {
        std::copy_n(whole.texture->row(y + row) + 4 * x, 4 * width, image->row(row));
    }
    return {image, {0, 0, static_cast<double>(width), static_cast<double>(height)}};
}

DrawnLayer boxPiece(LayerSpec const& look, LayerSpec::Box::Piece piece) {
    auto const sides = boxPieces(look);
    constexpr int straight = 2;
    double const inner = 2.0 * (sides.corner - sides.margin) + straight;
    LayerDrawing layer(LayerScale(look), inner, inner, sides.margin);
    paintBox(layer, look);
    auto const whole = layer.finish();
    // The pieces stand in three rows of three, as their names are listed.
    int const place = static_cast<int>(piece) - 1;
    int const begins[] = {0, sides.corner, sides.corner + straight};
    int const lengths[] = {sides.corner, straight, sides.corner};
    int const column = place % 3, row = place / 3;
    return cut(whole, begins[column], begins[row], lengths[column], lengths[row]);
}

}

DrawnLayer drawArrow(LayerSpec const& look, LayerSpec::Arrow const& arrow) {
    LayerScale const scale(look);
    double const end = std::clamp(arrow.drawnSteps, 0, arrow.steps) / static_cast<double>(arrow.steps);
    double const length = (arrow.to - arrow.from).length();
    if (!(length >= 4 * scale.unit) || end <= 0 || !isNear(arrow.from) || !isNear(arrow.to)) return {};
    auto const shape = shapeOf(look, arrow);
    SoftShadow const shadow{.spread = 1.5 * shape.thickness,
                            .fall = 0.4 * shape.thickness,
                            .color = withAlpha(shadeBehind(look.color), 0.42)};
    double const margin = std::ceil(shadow.reach() + shape.headWidth);
    // The curve stays within its control points; what lies off the canvas is not worth a bitmap.
    double const left = std::max(std::floor(std::min({shape.from.x, shape.to.x, shape.bend.x}) - margin), -margin);
    double const top = std::max(std::floor(std::min({shape.from.y, shape.to.y, shape.bend.y}) - margin), -margin);
    double const right = std::min(std::max({shape.from.x, shape.to.x, shape.bend.x}) + margin, scale.width + margin);
    double const bottom = std::min(std::max({shape.from.y, shape.to.y, shape.bend.y}) + margin, scale.height + margin);
    if (right <= left || bottom <= top) return {};
    Drawing drawing(static_cast<int>(std::ceil(right - left)), static_cast<int>(std::ceil(bottom - top)));
    CanvasPoint const offset{-left, -top};
    drawing.shadow({shadow}, [&](cairo_t* on) { paintArrow(on, shape, end, offset, 0); });
    setColor(drawing.cr(), rimColor(look));
    paintArrow(drawing.cr(), shape, end, offset, rimWidth(scale));
    setColor(drawing.cr(), look.color);
    paintArrow(drawing.cr(), shape, end, offset, 0);
    CanvasRect const body{shape.from.x - left, shape.from.y - top, shape.to.x - shape.from.x,
                          shape.to.y - shape.from.y};
    return {drawing.finish(), body};
}

BoxPieces boxPieces(LayerSpec const& look) {
    LayerScale const scale(look);
    int const margin = static_cast<int>(std::ceil(boxReach(look)));
    // The shadow of a corner is felt along the sides as far as it is soft.
    return {2 * margin + static_cast<int>(std::ceil(std::max(boxRadius(scale), boxLine(scale)))), margin};
}

DrawnLayer drawBox(LayerSpec const& look, LayerSpec::Box const& box) {
    if (box.piece != LayerSpec::Box::Piece::whole) return boxPiece(look, box.piece);
    LayerScale const scale(look);
    if (box.width < 1 || box.height < 1) return {};
    auto const side = [](std::int64_t asked, double most) { return std::min(static_cast<double>(asked), most); };
    LayerDrawing layer(scale, side(box.width, scale.width), side(box.height, scale.height), boxReach(look));
    paintBox(layer, look);
    return layer.finish();
}

}
