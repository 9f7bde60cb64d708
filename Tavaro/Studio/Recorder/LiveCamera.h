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
    explicit LiveCamera(MainQueue& queue);
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

    void forget();
    void show();
    void set(QImage picture, QString const& warning);

    std::optional<CameraDeviceSource> source_;
    std::shared_ptr<Slot> slot_; // shared with the camera's thread; one for each time that it is opened
    QImage picture_;
    QString warning_;
    QTimer timer_;
    OpenedBeside<CameraMonitor> device_;
};

}
