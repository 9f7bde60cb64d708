#include <Tavaro/Studio/Timeline/DrawnLooks.h>

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tavaro {

namespace {

constexpr std::size_t many = 600;

QImage blank(double width, double height, double ratio) {
    QImage picture(static_cast<int>(std::ceil(width * ratio)), static_cast<int>(std::ceil(height * ratio)),
                   QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    return picture;
}

QFont fontOf(TextLook const& look) {
    QFont font(QString::fromStdString(look.face));
    font.setPixelSize(static_cast<int>(std::lround(look.size)));
    font.setWeight(look.isStrong ? QFont::DemiBold : QFont::Normal);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

QImage drawText(TextLook const& look, double ratio) {
    auto const font = fontOf(look);
    QFontMetricsF const metrics(font);
    auto const text = metrics.elidedText(QString::fromStdString(look.text), Qt::ElideRight, look.widest);
    auto picture = blank(std::max(metrics.horizontalAdvance(text) + 1, 1.0), metrics.height(), ratio);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(font);
    painter.setPen(QColor::fromRgba(look.color));
    painter.drawText(QPointF(0, metrics.ascent()), text);
    return picture;
}

QImage drawBox(BoxLook const& look, double height, double ratio) {
    double const width = 2 * look.border() + 1 / ratio;
    auto picture = blank(width, height, ratio);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    double const inset = look.edgeWidth / 2;
    painter.setPen(look.edge.alpha() && look.edgeWidth > 0 ? QPen(look.edge, look.edgeWidth) : QPen(Qt::NoPen));
    painter.setBrush(look.fill);
    painter.drawRoundedRect(QRectF(inset, inset, width - 2 * inset, height - 2 * inset), look.radius, look.radius);
    return picture;
}

QPainterPath pathOf(ShapeLook const& look) {
    double const w = look.width, h = look.height;
    QPainterPath path;
    switch (look.form) {
    case ShapeLook::Form::playhead:
        path.addRoundedRect(QRectF(0, 0, w, h * 0.7), 3, 3);
        path.moveTo(0.5, h * 0.55);
        path.lineTo(w / 2, h);
        path.lineTo(w - 0.5, h * 0.55);
        path.closeSubpath();
        path.setFillRule(Qt::WindingFill);
        break;
    case ShapeLook::Form::aboveRampIn: path.addPolygon(QPolygonF({{0, 0}, {w, 0}, {0, h}})); break;
    case ShapeLook::Form::aboveRampOut: path.addPolygon(QPolygonF({{0, 0}, {w, 0}, {w, h}})); break;
    case ShapeLook::Form::folded:
        path.addPolygon(QPolygonF({{w * 0.3, h * 0.15}, {w * 0.75, h / 2}, {w * 0.3, h * 0.85}}));
        break;
    case ShapeLook::Form::unfolded:
        path.addPolygon(QPolygonF({{w * 0.15, h * 0.3}, {w * 0.85, h * 0.3}, {w / 2, h * 0.75}}));
        break;
    case ShapeLook::Form::cross: break;
    }
    return path;
}

QImage drawShape(ShapeLook const& look, double ratio) {
    auto picture = blank(look.width, look.height, ratio);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    auto const color = QColor::fromRgba(look.color);
    if (look.form == ShapeLook::Form::cross) {
        painter.setPen(QPen(color, 1.5));
        painter.drawLine(QPointF(2, 2), QPointF(look.width - 2, look.height - 2));
        painter.drawLine(QPointF(2, look.height - 2), QPointF(look.width - 2, 2));
    }
    painter.fillPath(pathOf(look), color);
    return picture;
}

}

void DrawnLooks::setPixelRatio(double ratio) {
    if (ratio == ratio_) return;
    *this = {};
    ratio_ = ratio;
}

QImage DrawnLooks::text(TextLook const& look) {
    auto const [kept, isNew] = texts_.try_emplace(look);
    if (isNew) kept->second.picture = drawText(look, ratio_);
    kept->second.isUsed = true;
    return kept->second.picture;
}

QImage DrawnLooks::box(BoxLook const& look, double height) {
    auto const [kept, isNew] =
        boxes_.try_emplace({look.fill.rgba(), look.edge.rgba(), look.radius, look.edgeWidth, height});
    if (isNew) kept->second.picture = drawBox(look, height, ratio_);
    kept->second.isUsed = true;
    return kept->second.picture;
}

QImage DrawnLooks::shape(ShapeLook const& look) {
    auto const [kept, isNew] = shapes_.try_emplace(look);
    if (isNew) kept->second = drawShape(look, ratio_);
    return kept->second;
}

void DrawnLooks::paintEnds() {
    auto const sweep = [](auto& all) {
        if (all.size() > many) std::erase_if(all, [](auto const& each) { return !each.second.isUsed; });
        for (auto& each : all) each.second.isUsed = false;
    };
    sweep(texts_);
    sweep(boxes_);
}

}
