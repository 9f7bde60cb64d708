#include <Tavaro/Studio/Recorder/PictureItem.h>

#include <QPainter>

namespace tavaro {

PictureItem::PictureItem(QQuickItem* parent) : QQuickPaintedItem(parent) {
    connect(this, &QQuickItem::widthChanged, this, &PictureItem::shownRectChanged);
    connect(this, &QQuickItem::heightChanged, this, &PictureItem::shownRectChanged);
}

void PictureItem::setPicture(QImage const& picture) {
    bool const isOfOtherSize = picture.size() != picture_.size();
    picture_ = picture;
    Q_EMIT pictureChanged();
    if (isOfOtherSize) Q_EMIT shownRectChanged();
    update();
}

QRectF PictureItem::shownRect() const {
    if (picture_.isNull()) return {};
    QRectF rect({}, QSizeF(picture_.size()).scaled(size(), Qt::KeepAspectRatio));
    rect.moveCenter({width() / 2, height() / 2});
    return rect;
}

void PictureItem::paint(QPainter* painter) {
    if (picture_.isNull()) return;
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(shownRect(), picture_);
}

}
