#pragma once

#include <Tavaro/Studio/Recorder/OpenedBeside.h>

#include <TavaroCapture/Monitoring/CameraMonitor.h>

#include <QImage>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace tavaro {

/// What a camera sees that is not recorded, as in a mirror. The camera is open only while it is wanted.
class LiveCamera : public QObject {
    Q_OBJECT
    Q_PROPERTY(QImage picture READ picture NOTIFY changed) // null: there is none
    Q_PROPERTY(QString warning READ warning NOTIFY changed)

public:
    using Open = std::function<std::unique_ptr<CameraMonitor>(CameraDeviceSource const&, CameraMonitor::Picture)>;

    /// `open` runs beside the main queue. Throws `CaptureError`.
    explicit LiveCamera(MainQueue& queue, Open open = openedCamera);
    ~LiveCamera() override;

    QImage const& picture() const { return picture_; }
    QString const& warning() const { return warning_; }

    /// None: no camera is open.
    void look(std::optional<CameraDeviceSource> const& source);
    /// Closes the camera; `closed` is called once another may open it.
    void letGo(std::function<void()> closed);

Q_SIGNALS:
    void changed();

private:
    struct Slot;

    static std::unique_ptr<CameraMonitor> openedCamera(CameraDeviceSource const& source,
                                                       CameraMonitor::Picture picture);
    void forget();
    void show();
    void set(QImage picture, QString const& warning);

    Open const open_;
    std::optional<CameraDeviceSource> source_;
    std::shared_ptr<Slot> slot_; // shared with the camera's thread; one for each time that it is opened
    QImage picture_;
    QString warning_;
    QTimer timer_;
    OpenedBeside<CameraMonitor> device_;
};

}
