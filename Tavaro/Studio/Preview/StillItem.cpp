#include <Tavaro/Studio/Preview/StillItem.h>

#include <QPainter>
#include <QPainterPath>
#include <QQuickWindow>

namespace tavaro {

StillItem::StillItem(QQuickItem* parent) : QQuickPaintedItem(parent) {}

void StillItem::ask() {
    if (!isComponentComplete() || !window() || !isVisible() || size().isEmpty()) return;
    askFor((size() * window()->effectiveDevicePixelRatio()).toSize());
}

void StillItem::show(QImage const& picture) {
    picture_ = picture;
    update();
    Q_EMIT pictureChanged();
}

void StillItem::paint(QPainter* painter) {
    if (picture_.isNull()) return;
    QRectF place({}, QSizeF(picture_.size()).scaled(size(), Qt::KeepAspectRatio));
    place.moveCenter({width() / 2, height() / 2});
    QPainterPath outline;
    outline.addRoundedRect(place, radius_, radius_);
    painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter->setClipPath(outline);
    painter->drawImage(place, picture_);
}

void StillItem::componentComplete() {
    QQuickPaintedItem::componentComplete();
    ask();
}

void StillItem::geometryChange(QRectF const& now, QRectF const& before) {
    QQuickPaintedItem::geometryChange(now, before);
    if (now.size() != before.size()) ask();
}

void StillItem::itemChange(ItemChange change, ItemChangeData const& data) {
    QQuickPaintedItem::itemChange(change, data);
    bool const isSeen = change == ItemSceneChange || (change == ItemVisibleHasChanged && data.boolValue) ||
                        change == ItemDevicePixelRatioHasChanged;
    if (isSeen) ask();
}

}
