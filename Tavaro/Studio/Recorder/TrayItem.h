#pragma once

#include <Tavaro/Studio/Recorder/RecorderModel.h>

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

#include <memory>

namespace tavaro {

/// The recorder in the desktop's tray, for as long as one answers: a StatusNotifierItem on the session's bus. A click
/// ends the take, or brings the window where there is none; a middle one begins a take, pauses it and lets it go on;
/// its menu has all of that.
class TrayItem : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isThere READ isThere NOTIFY changed) // whether a tray shows it

public:
    explicit TrayItem(RecorderModel& recorder, QDBusConnection const& bus = QDBusConnection::sessionBus());
    ~TrayItem() override;

    bool isThere() const { return isThere_; }

Q_SIGNALS:
    void changed();
    /// Its user wants to see the window.
    void windowWanted();
    void libraryWanted();
    void endWanted();

private:
    void offer();
    void set(bool isThere);

    QDBusConnection bus_;
    QString const name_; // on the bus
    std::unique_ptr<QObject> const item_, menu_;
    QDBusServiceWatcher trays_;
    bool isThere_ = false;
};

}
