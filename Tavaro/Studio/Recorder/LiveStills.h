#pragma once

#include <Tavaro/Model/Jobs/SideQueue.h>

#include <TavaroCapture/Sources/CaptureSource.h>

#include <QImage>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <set>
#include <vector>

namespace tavaro {

/// Small pictures of what can be recorded, one after the other, each about every two seconds, for as long as somebody
/// looks; what has none yet comes first. They are taken and made small beside the main queue.
class LiveStills : public QObject {
    Q_OBJECT

public:
    struct Wanted {
        QString id;
        CaptureSource source;
        QSize size; // that it fits into; pixels
    };
    using Take = std::function<QImage(CaptureSource const& source, QSize size)>;

    /// `take` runs beside the main queue; what it throws leaves the picture as it was.
    LiveStills(MainQueue& queue, Take take);

    void setWanted(std::vector<Wanted> wanted);
    void setWatched(bool isWatched);

Q_SIGNALS:
    void taken(QString const& id, QImage const& still);

private:
    /// The first that was not tried since it is wanted.
    std::vector<Wanted>::const_iterator untried() const;
    void takeNext();

    Take const take_;
    std::vector<Wanted> wanted_;
    std::set<QString> tried_;
    std::size_t next_ = 0;
    bool isWatched_ = false;
    bool isTaking_ = false;
    QTimer timer_;
    SideQueue side_;
};

/// Of an X11 desktop. Throws `CaptureError`.
QImage smallStill(CaptureSource const& source, QSize size);

}
