#include <Tavaro/Studio/Preview/PreviewItem.h>

#include <Tavaro/Studio/Preview/PictureSize.h>

#include <QQuickWindow>
#include <QSGImageNode>
#include <cmath>
#include <utility>

namespace tavaro {

PreviewItem::PreviewItem(QQuickItem* parent) : QQuickItem(parent) { setFlag(ItemHasContents); }

void PreviewItem::setPreview(FilmPreview* preview) {
    if (preview_ == preview) return;
    if (preview_) {
        preview_->disconnect(this);
        preview_->fit({});
    }
    preview_ = preview;
    if (preview_) {
        connect(preview_, &FilmPreview::pictureChanged, this, &PreviewItem::place);
        connect(preview_, &QObject::destroyed, this, &QQuickItem::update);
    }
    fit();
    place();
    Q_EMIT previewChanged();
}

double PreviewItem::pixelRatio() const { return window() ? window()->effectiveDevicePixelRatio() : 1; }

void PreviewItem::fit() {
    if (!preview_) return;
    double const ratio = pixelRatio();
    bool const isSeen = window() && isVisible();
    preview_->fit(isSeen ? Size2{std::llround(width() * ratio), std::llround(height() * ratio)} : Size2{});
}

/// The film's pixels lie on those of the screen, so that a picture of full size is not resampled.
void PreviewItem::place() {
    if (preview_ && preview_->picture().canvas != uploaded_) update();
    QRectF place;
    QSizeF actual;
    if (preview_) {
        double const ratio = pixelRatio();
        auto const canvas = preview_->canvas();
        actual = QSizeF(static_cast<double>(canvas.width), static_cast<double>(canvas.height)) / ratio;
        auto const size =
            pictureSize(preview_->canvas(), {std::llround(width() * ratio), std::llround(height() * ratio)});
        auto const corner = mapToScene({0, 0}) * ratio;
        auto const start = [](double from, double room, double wanted) {
            return std::round(from + (room - wanted) / 2) - from;
        };
        auto const filmWidth = static_cast<double>(size.width);
        auto const filmHeight = static_cast<double>(size.height);
        place = QRectF(start(corner.x(), width() * ratio, filmWidth) / ratio,
                       start(corner.y(), height() * ratio, filmHeight) / ratio, filmWidth / ratio, filmHeight / ratio);
    }
    if (std::exchange(actualSize_, actual) != actual) Q_EMIT actualSizeChanged();
    if (std::exchange(filmRect_, place) == place) return;
    update();
    Q_EMIT filmRectChanged();
}

QPointF PreviewItem::toFilm(QPointF const& point) const {
    if (filmRect_.isEmpty()) return {};
    return {(point.x() - filmRect_.x()) / filmRect_.width(), (point.y() - filmRect_.y()) / filmRect_.height()};
}

QPointF PreviewItem::fromFilm(QPointF const& point) const {
    return {filmRect_.x() + point.x() * filmRect_.width(), filmRect_.y() + point.y() * filmRect_.height()};
}

QImage PreviewItem::grab() const { return preview_ ? preview_->grab() : QImage(); }

/// The render thread, while the main thread waits.
QSGNode* PreviewItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    auto* node = static_cast<QSGImageNode*>(old);
    auto const canvas = preview_ ? preview_->picture().canvas : nullptr;
    if (!canvas || filmRect_.isEmpty()) {
        delete node;
        uploaded_.reset();
        return nullptr;
    }
    if (!node) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        uploaded_.reset();
    }
    if (canvas != uploaded_) {
        node->setTexture(window()->createTextureFromImage(imageOf(canvas), QQuickWindow::TextureIsOpaque));
        uploaded_ = canvas;
    }
    bool const isExact = std::lround(filmRect_.width() * pixelRatio()) == canvas->width();
    node->setFiltering(isExact ? QSGTexture::Nearest : QSGTexture::Linear);
    node->setRect(filmRect_);
    node->setSourceRect(QRectF(0, 0, canvas->width(), canvas->height()));
    return node;
}

void PreviewItem::geometryChange(QRectF const& now, QRectF const& before) {
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size()) fit();
    place();
}

void PreviewItem::itemChange(ItemChange change, ItemChangeData const& data) {
    QQuickItem::itemChange(change, data);
    bool const concerns =
        change == ItemSceneChange || change == ItemVisibleHasChanged || change == ItemDevicePixelRatioHasChanged;
    if (!concerns) return;
    fit();
    place();
}

}
