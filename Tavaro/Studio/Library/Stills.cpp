#include <Tavaro/Studio/Library/Stills.h>

#include <Tavaro/Studio/Library/LibraryText.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Package/FileStamp.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <QImageReader>
#include <QPainter>
#include <QPainterPath>
#include <QQuickTextureFactory>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <spdlog/spdlog.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr double roundness = 0.03; // of the width
constexpr double firstLook = 1;    // seconds into a movie

QString source(char const* kind, fs::path const& file) {
    std::error_code ignored;
    auto const written = fs::last_write_time(file, ignored).time_since_epoch().count();
    auto const name = libraryText::text(file).toUtf8().toBase64(QByteArray::Base64UrlEncoding);
    return QStringLiteral("image://stills/%1/%2/%3")
        .arg(QLatin1String(kind), QString::number(ignored ? 0 : written), QLatin1String(name));
}

QImage firstPicture(fs::path const& movie) {
    auto const frame = MovieReader(movie, {.threads = 1}).frame(firstLook);
    Image pixels;
    FrameConverter().convert(frame, pixels);
    auto const view = pixels.view();
    return QImage(view.pixels, view.width, view.height, view.stride, QImage::Format_RGBX8888).copy();
}

/// The middle of the picture in that shape, cut round.
QImage filling(QImage const& picture, QSize const& size) {
    auto const scaled = picture.scaled(size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    QImage filled(size, QImage::Format_ARGB32_Premultiplied);
    filled.fill(Qt::transparent);
    QPainter painter(&filled);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath outline;
    auto const radius = std::round(size.width() * roundness);
    outline.addRoundedRect(QRectF(QPointF(), QSizeF(size)), radius, radius);
    painter.setClipPath(outline);
    painter.drawImage(QPoint((size.width() - scaled.width()) / 2, (size.height() - scaled.height()) / 2), scaled);
    return filled;
}

class Response : public QQuickImageResponse {
public:
    QQuickTextureFactory* textureFactory() const override {
        return QQuickTextureFactory::textureFactoryForImage(image);
    }
    void cancel() override { isCancelled = true; }

    QImage image;
    std::atomic<bool> isCancelled = false;
};

}

QString Stills::ofPicture(fs::path const& file) { return source("picture", file); }

QString Stills::ofMovie(fs::path const& file) { return source("movie", file); }

Stills::Stills() : reader_(std::make_unique<SerialQueue>("com.tavaro.stills")) {}

QQuickImageResponse* Stills::requestImageResponse(QString const& id, QSize const& size) {
    auto* const response = new Response;
    // The engine keeps the response until it is finished, cancelled or not.
    reader_->async([response, id, size] {
        if (!response->isCancelled) response->image = still(id, size);
        Q_EMIT response->finished();
    });
    return response;
}

QImage Stills::still(QString const& id, QSize const& size) {
    auto const parts = id.split(QLatin1Char('/'));
    if (parts.size() != 3) return {};
    auto const file = libraryText::path(
        QString::fromUtf8(QByteArray::fromBase64(parts[2].toLatin1(), QByteArray::Base64UrlEncoding)));
    try {
        auto const picture =
            parts[0] == QStringLiteral("movie") ? firstPicture(file) : QImageReader(libraryText::text(file)).read();
        return picture.isNull() || size.isEmpty() ? picture : filling(picture, size);
    } catch (Error const& error) {
        spdlog::debug("There is no still of “{}”: {}", file.string(), error.what());
        return {};
    }
}

}
