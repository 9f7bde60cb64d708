#pragma once

#include <QImage>
#include <QQuickPaintedItem>
#include <QSize>

namespace tavaro {

/// A small picture that is drawn elsewhere, as large as fits into the item, in the middle of it, its corners round. It
/// is asked for while the item is seen, and anew when its size changes.
class StillItem : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(double radius MEMBER radius_ NOTIFY radiusChanged)
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY pictureChanged)

public:
    explicit StillItem(QQuickItem* parent = nullptr);

    bool isEmpty() const { return picture_.isNull(); }
    void paint(QPainter* painter) override;

Q_SIGNALS:
    void radiusChanged();
    void pictureChanged();

protected:
    /// Asks for a picture of that many pixels, which `show` gets. A class that is derived calls `ask` when what it
    /// shows is another.
    virtual void askFor(QSize const& pixels) = 0;
    void ask();
    void show(QImage const& picture);

    void componentComplete() override;
    void geometryChange(QRectF const& now, QRectF const& before) override;
    void itemChange(ItemChange change, ItemChangeData const& data) override;

private:
    double radius_ = 4;
    QImage picture_;
};

}
