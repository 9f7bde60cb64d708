#pragma once

#include <TavaroPlatform/Queues/SerialQueue.h>

#include <QImage>
#include <QQuickAsyncImageProvider>

#include <filesystem>
#include <memory>

namespace tavaro {

/// Small pictures of projects and takes for QML, "image://stills/…", read and scaled beside the main thread. They fill
/// the size that is asked for, with round corners, since no renderer rounds those of pictures.
class Stills : public QQuickAsyncImageProvider {
public:
    /// The sources: of a picture, as it is now; of a movie, a moment in.
    static QString ofPicture(std::filesystem::path const& file);
    static QString ofMovie(std::filesystem::path const& file);

    Stills();

    QQuickImageResponse* requestImageResponse(QString const& id, QSize const& size) override;

    /// What is shown for a source's id; null where there is nothing to see. Any thread.
    static QImage still(QString const& id, QSize const& size);

private:
    std::unique_ptr<SerialQueue> reader_;
};

}
