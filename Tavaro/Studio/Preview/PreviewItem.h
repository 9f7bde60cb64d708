#pragma once

#include <Tavaro/Studio/Preview/FilmPreview.h>

#include <QPointF>
#include <QPointer>
#include <QQuickItem>
#include <QRectF>
#include <QSizeF>

namespace tavaro {

/// Shows the picture of a film preview in the middle of its room, its shape kept, at the pixels of the screen. It is
/// drawn by one image node, so by every renderer alike.
class PreviewItem : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(tavaro::FilmPreview* preview READ preview WRITE setPreview NOTIFY previewChanged)
    Q_PROPERTY(QRectF filmRect READ filmRect NOTIFY filmRectChanged)
    Q_PROPERTY(QSizeF actualSize READ actualSize NOTIFY actualSizeChanged)

public:
    explicit PreviewItem(QQuickItem* parent = nullptr);

    FilmPreview* preview() const { return preview_; }
    void setPreview(FilmPreview* preview);
    /// Where the film is seen, in the item's coordinates.
    QRectF filmRect() const { return filmRect_; }
    /// The size at which each of the film's pixels is one of the screen's.
    QSizeF actualSize() const { return actualSize_; }

    /// Points of the film are 0…1 from its left and top; those outside of it are outside of that.
    Q_INVOKABLE QPointF toFilm(QPointF const& point) const;
    Q_INVOKABLE QPointF fromFilm(QPointF const& point) const;
    /// The canvas as it was drawn.
    Q_INVOKABLE QImage grab() const;

Q_SIGNALS:
    void previewChanged();
    void filmRectChanged();
    void actualSizeChanged();

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;
    void geometryChange(QRectF const& now, QRectF const& before) override;
    void itemChange(ItemChange change, ItemChangeData const& data) override;

private:
    double pixelRatio() const;
    void fit();
    void place();

    QPointer<FilmPreview> preview_;
    QRectF filmRect_;
    QSizeF actualSize_;
    std::shared_ptr<Image const> uploaded_; // what the node's texture shows
};

}
