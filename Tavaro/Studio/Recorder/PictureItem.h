#pragma once

#include <QImage>
#include <QQuickPaintedItem>

namespace tavaro {

/// A picture that changes, as large as fits into the item, in the middle of it.
class PictureItem : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QImage picture READ picture WRITE setPicture NOTIFY pictureChanged)
    Q_PROPERTY(QRectF shownRect READ shownRect NOTIFY shownRectChanged) // where of the item the picture is

public:
    explicit PictureItem(QQuickItem* parent = nullptr);

    QImage const& picture() const { return picture_; }
    void setPicture(QImage const& picture);
    QRectF shownRect() const;

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void pictureChanged();
    void shownRectChanged();

private:
    QImage picture_;
};

}
