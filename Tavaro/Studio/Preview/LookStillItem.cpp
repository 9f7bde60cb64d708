#include <Tavaro/Studio/Preview/LookStillItem.h>

#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <QPainter>
#include <QPainterPath>
#include <QQuickWindow>

#include <cmath>

namespace tavaro {

LookStillItem::LookStillItem(QQuickItem* parent) : QQuickPaintedItem(parent) {}

void LookStillItem::setLooks(LookStills* looks) {
    if (looks == looks_) return;
    if (looks_) looks_->disconnect(this);
    looks_ = looks;
    if (looks_) connect(looks_, &LookStills::changed, this, &LookStillItem::ask);
    ask();
    Q_EMIT lookChanged();
}

void LookStillItem::setSubject(QString const& subject) {
    subject_ = subject;
    ask();
    Q_EMIT lookChanged();
}

void LookStillItem::setChanges(QVariantMap const& changes) {
    if (changes == changes_) return;
    changes_ = changes;
    ask();
    Q_EMIT lookChanged();
}

void LookStillItem::ask() {
    auto const subject = enumNamed<LookSubject>(subject_.toStdString());
    if (!isComponentComplete() || !looks_ || !subject || !window() || !isVisible() || size().isEmpty()) return;
    auto const ratio = window()->effectiveDevicePixelRatio();
    LookStills::Look look{*subject, {}, {std::llround(width() * ratio), std::llround(height() * ratio)}};
    for (auto const& [path, value] : changes_.asKeyValueRange())
        look.changes.push_back({path.toStdString(), toJSON(value)});
    interest_ = looks_->draw(look, [this](QImage const& picture) { show(picture); });
}

void LookStillItem::show(QImage const& picture) {
    picture_ = picture;
    update();
    Q_EMIT pictureChanged();
}

void LookStillItem::paint(QPainter* painter) {
    if (picture_.isNull()) return;
    QRectF place({}, QSizeF(picture_.size()).scaled(size(), Qt::KeepAspectRatio));
    place.moveCenter({width() / 2, height() / 2});
    QPainterPath outline;
    outline.addRoundedRect(place, radius_, radius_);
    painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter->setClipPath(outline);
    painter->drawImage(place, picture_);
}

void LookStillItem::componentComplete() {
    QQuickPaintedItem::componentComplete();
    ask();
}

void LookStillItem::geometryChange(QRectF const& now, QRectF const& before) {
    QQuickPaintedItem::geometryChange(now, before);
    if (now.size() != before.size()) ask();
}

void LookStillItem::itemChange(ItemChange change, ItemChangeData const& data) {
    QQuickPaintedItem::itemChange(change, data);
    bool const isSeen = change == ItemSceneChange || (change == ItemVisibleHasChanged && data.boolValue) ||
                        change == ItemDevicePixelRatioHasChanged;
    if (isSeen) ask();
}

}
